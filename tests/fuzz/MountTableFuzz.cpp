// Any bytes in place of the kernel's table of mounts, in which other users choose names: entries or nothing.

#include "mounting/MountTable.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const auto& entry : ferrobank::drive::parseMountTable(text)) {
        if (entry.mountPoint.size() > size || entry.source.size() > size)
            std::abort();
    }
    return 0;
}
