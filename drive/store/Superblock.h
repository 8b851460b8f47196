#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace ferrobank::drive {

/// The few facts of a Btrfs superblock that the tool needs, read from the first copy at 64 KiB (on-disk
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

} // namespace ferrobank::drive
