// Any bytes as what the drive tool's processes tell each other: a whole record or none, read back as it was
// written.

#include "control/Message.h"
#include "state/State.h"

#include <cstdint>
#include <cstdlib>

using namespace ferrobank::drive;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (const auto request = Request::fromLine(text)) {
        const auto again = Request::fromLine(request->toLine());
        if (!again || again->operation != request->operation)
            std::abort();
    }
    if (const auto reply = Reply::fromLine(text)) {
        if (reply->toLine().find('\n') != reply->toLine().size() - 1)
            std::abort();
    }
    if (const auto state = State::fromJson(text)) {
        if (State::fromJson(state->toJson()) != state)
            std::abort();
    }
    return 0;
}
