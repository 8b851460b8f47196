// Any bytes as a unit file, and any name as the program of one: what was written is read back, on as many
// lines.

#include "Platform/linux/login/ServiceUnit.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr auto kLines = 20;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    static_cast<void>(ferrobank::programOfServiceUnit(bytes));
    if (bytes.find('\0') == std::string_view::npos) {
        const ferrobank::AgentDescription agent{{"/" + std::string(bytes), {std::string(bytes)}},
                                                ferrobank::KeepAlive::AfterFailure};
        const std::string text = ferrobank::serviceUnitText(agent);
        if (ferrobank::programOfServiceUnit(text) != agent.command.program ||
            std::count(text.begin(), text.end(), '\n') != kLines)
        {
            std::abort();
        }
    }
    return 0;
}
