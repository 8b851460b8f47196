#include "store/Superblock.h"

#include "platform/FileDescriptor.h"

#include <endian.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>

namespace ferrobank::drive {

namespace {

constexpr off_t kSuperblockOffset = 0x10000;
constexpr std::size_t kIdentifierOffset = 0x20;
constexpr std::size_t kMagicOffset = 0x40;
constexpr std::size_t kGenerationOffset = 0x48;
constexpr std::size_t kTotalBytesOffset = 0x70;
constexpr char kMagic[] = "_BHRfS_M";

using Block = std::array<unsigned char, 512>;

std::uint64_t numberAt(const Block& block, std::size_t offset)
{
    std::uint64_t value = 0;
    std::memcpy(&value, block.data() + offset, sizeof value);
    return le64toh(value);
}

std::string identifierText(const unsigned char* bytes)
{
    std::string text;
    for (int index = 0; index < 16; ++index) {
        if (index == 4 || index == 6 || index == 8 || index == 10) {
            text += '-';
        }
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", bytes[index]);
        text += digits;
    }
    return text;
}

} // namespace

std::optional<Superblock> readSuperblock(const std::filesystem::path& image)
{
    const FileDescriptor file(::open(image.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    Block block{};
    if (!file || ::pread(file.get(), block.data(), block.size(), kSuperblockOffset) !=
                     static_cast<ssize_t>(block.size()))
    {
        return std::nullopt;
    }
    if (std::memcmp(block.data() + kMagicOffset, kMagic, sizeof kMagic - 1) != 0) {
        return std::nullopt;
    }
    Superblock found;
    found.uuid = identifierText(block.data() + kIdentifierOffset);
    found.generation = numberAt(block, kGenerationOffset);
    found.totalBytes = numberAt(block, kTotalBytesOffset);
    return found;
}

} // namespace ferrobank::drive
