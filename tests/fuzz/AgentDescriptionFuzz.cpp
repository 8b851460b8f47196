// Any bytes in place of the agent's property list: never a crash, never a program outside the bundle.

#include "Platform/linux/login/AgentDescription.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto agent = ferrobank::parseAgentDescription(bytes, "/opt/Ferrobank.app");
    if (agent && !agent->command.program.lexically_normal().native().starts_with("/opt/Ferrobank.app/")) {
        std::abort();
    }
    return 0;
}
