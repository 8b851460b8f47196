// Any bytes where an image's superblock should be: its facts, or nothing.

#include "FuzzFolder.h"
#include "store/Superblock.h"

#include <cstdint>
#include <cstdlib>

using namespace ferrobank::drive;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const FuzzFolder folder;
    constexpr std::size_t kFirstCopy = 0x10000;
    const auto image = folder.write("image", data, size, size % 7 == 0 ? 0 : kFirstCopy);
    if (const auto found = readSuperblock(image); found && found->uuid.size() != 36)
        std::abort();
    return 0;
}
