#pragma once

#include "mounting/LoopDevices.h"
#include "mounting/MountTable.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// The subvolume that people see; its parent folder belongs to the user, which a new Btrfs's root does not.
inline constexpr const char* kFilesSubvolume = "u/files";
/// The tool's own folder on the drive.
inline constexpr const char* kOwnFolder = ".ferrobank";
inline constexpr const char* kFilesOption = "subvol=u/files";
inline constexpr const char* kMountOptions = "compress=zstd:1,discard=sync,subvol=u/files";

/// The mounted drive: which loop device, and where. Plain value; true when it was read.
struct Volume {
    std::string loop;
    std::filesystem::path mountPoint;
    bool readOnly = false;

    bool operator==(const Volume&) const = default;
};

/// The drive's mount among `loops`, or nothing. Other mounts of the same device (its top level, say) do not
/// count.
[[nodiscard]] std::optional<Volume> findVolume(const std::vector<LoopDevice>& loops,
                                               const std::vector<MountEntry>& mounts);

/// Where a loop device is mounted with anything else than the drive's subvolume.
[[nodiscard]] std::vector<MountEntry> otherMounts(const std::string& loop,
                                                  const std::vector<MountEntry>& mounts);

/// The same, asked of the system now.
[[nodiscard]] std::optional<Volume> findVolume(const std::filesystem::path& image, Recognise how);

} // namespace ferrobank::drive
