#include "store/Superblock.h"

#include "platform/FileDescriptor.h"

#include <endian.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kSumBytes = 32;
constexpr std::size_t kIdentifierOffset = 0x20;
constexpr std::size_t kPlaceOffset = 0x30;
constexpr std::size_t kMagicOffset = 0x40;
constexpr std::size_t kGenerationOffset = 0x48;
constexpr std::size_t kTotalBytesOffset = 0x70;
constexpr std::size_t kSumKindOffset = 0xc4;
constexpr std::uint16_t kSumIsCrc32c = 0;
constexpr char kMagic[] = "_BHRfS_M";

using Block = std::array<unsigned char, 4096>;

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

/// CRC-32C as on-disk formats have it: reflected, all ones before and after.
std::uint32_t crc32c(const unsigned char* bytes, std::size_t size)
{
    constexpr std::uint32_t kPolynomial = 0x82f63b78U;
    std::uint32_t sum = ~0U;
    for (std::size_t index = 0; index < size; ++index) {
        sum ^= bytes[index];
        for (int bit = 0; bit < 8; ++bit) {
            sum = (sum >> 1U) ^ ((sum & 1U) != 0 ? kPolynomial : 0);
        }
    }
    return ~sum;
}

bool readBlock(const std::filesystem::path& image, std::uint64_t place, Block& block)
{
    const FileDescriptor file(::open(image.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    return file && ::pread(file.get(), block.data(), block.size(), static_cast<off_t>(place)) ==
                       static_cast<ssize_t>(block.size());
}

bool hasMagic(const Block& block)
{
    return std::memcmp(block.data() + kMagicOffset, kMagic, sizeof kMagic - 1) == 0;
}

bool hasRightSum(const Block& block)
{
    std::uint16_t kind = 0;
    std::memcpy(&kind, block.data() + kSumKindOffset, sizeof kind);
    if (le16toh(kind) != kSumIsCrc32c) {
        return true;
    }
    std::uint32_t sum = 0;
    std::memcpy(&sum, block.data(), sizeof sum);
    return le32toh(sum) == crc32c(block.data() + kSumBytes, block.size() - kSumBytes);
}

Superblock decode(const Block& block)
{
    Superblock found;
    found.uuid = identifierText(block.data() + kIdentifierOffset);
    found.generation = numberAt(block, kGenerationOffset);
    found.totalBytes = numberAt(block, kTotalBytesOffset);
    return found;
}

} // namespace

std::optional<Superblock> readSuperblock(const std::filesystem::path& image)
{
    Block block{};
    return readBlock(image, kSuperblockPlaces[0], block) && hasMagic(block) ? std::optional(decode(block))
                                                                            : std::nullopt;
}

std::optional<Superblock> readWholeSuperblock(const std::filesystem::path& image, std::size_t copy)
{
    const std::uint64_t place = kSuperblockPlaces[copy];
    Block block{};
    if (!readBlock(image, place, block) || !hasMagic(block) || numberAt(block, kPlaceOffset) != place ||
        !hasRightSum(block))
    {
        return std::nullopt;
    }
    return decode(block);
}

std::optional<std::size_t> bestMirror(const std::filesystem::path& image)
{
    std::optional<std::size_t> best;
    std::uint64_t generation = 0;
    for (std::size_t copy = 1; copy < std::size(kSuperblockPlaces); ++copy) {
        const std::optional<Superblock> found = readWholeSuperblock(image, copy);
        if (found && (!best || found->generation > generation)) {
            best = copy;
            generation = found->generation;
        }
    }
    return best;
}

} // namespace ferrobank::drive
