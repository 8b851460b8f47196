#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace ferrobank::drive {

/// The few facts of a Btrfs superblock that the tool needs (on-disk
/// format of the kernel's `struct btrfs_super_block`). Plain value.
struct Superblock {
    /// The file system's identifier in the usual 8-4-4-4-12 form.
    std::string uuid;
    /// Bytes that the volume spans; its file must be at least this long.
    std::uint64_t totalBytes = 0;
    std::uint64_t generation = 0;
};

/// Reads it without following a link at the last part of the path. Nothing when there is no Btrfs there.
[[nodiscard]] std::optional<Superblock> readSuperblock(const std::filesystem::path& image);

/// The file system keeps copies of its superblock at fixed places; the kernel mounts by the first one alone.
inline constexpr std::uint64_t kSuperblockPlaces[] = {0x1'0000, 0x400'0000, 0x40'0000'0000};

/// One copy of the superblock, 0 being the first. Nothing unless its magic number, its own place and, where
/// the volume uses CRC-32C as new volumes do, its checksum are right.
[[nodiscard]] std::optional<Superblock> readWholeSuperblock(const std::filesystem::path& image,
                                                            std::size_t copy);

/// The copy that is whole and furthest on, other than the first.
[[nodiscard]] std::optional<std::size_t> bestMirror(const std::filesystem::path& image);

} // namespace ferrobank::drive
