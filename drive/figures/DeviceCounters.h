#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace ferrobank::drive {

/// The subvolume of the space guard, below the root of the drive.
inline constexpr const char* kGuardSubvolume = ".ferrobank/space";

/// Where the kernel publishes the counters of mounted volumes. Tests point it elsewhere.
inline constexpr const char* kSysfsVolumes = "/sys/fs/btrfs";

/// Bytes that the drive takes up on the device: data, metadata (both copies) and system, without the space
/// guard's `guardBytes`, which cost the computer nothing. Reads three files of sysfs and opens nothing on the
/// drive. Empty while the volume is not mounted.
[[nodiscard]] std::optional<std::uint64_t> bytesInUse(const std::string& uuid, std::uint64_t guardBytes,
                                                      const std::filesystem::path& volumes = kSysfsVolumes);

/// Bytes of data that programs have written and the drive has not yet put anywhere, as they were written:
/// they may take less once they are compressed. 0 at rest, and while the volume is not mounted.
[[nodiscard]] std::uint64_t bytesOnTheirWay(const std::string& uuid,
                                            const std::filesystem::path& volumes = kSysfsVolumes);

/// What sharing and compression save: never negative, though the metadata of a small drive can outweigh it.
[[nodiscard]] std::uint64_t savedBytes(std::uint64_t volumeUsed, std::uint64_t inUse);

/// Bytes that a sparse file really takes on its disk, or empty if it is not there.
[[nodiscard]] std::optional<std::uint64_t> allocatedBytes(const std::filesystem::path& file);

/// The volume's change counter from sysfs: equal numbers mean that nothing was committed in between. Empty
/// while not mounted.
[[nodiscard]] std::optional<std::uint64_t>
volumeGeneration(const std::string& uuid, const std::filesystem::path& volumes = kSysfsVolumes);

/// A counter that changes with every committed change of the files around `folder`, which is open on the
/// volume, but not with those of the space guard, which lies in a subvolume of its own. Where somebody has
/// made further subvolumes it is the counter of the whole volume. Numbers of different drives mean nothing to
/// each other.
[[nodiscard]] std::optional<std::uint64_t> filesGeneration(int folder, const std::string& uuid);

/// Identity and change counter of the volume that an open file or folder lies on.
struct VolumeState {
    std::string uuid;
    std::uint64_t generation = 0;
};

/// Asks the kernel through the open descriptor; needs no privilege. Empty when it lies on no Btrfs volume.
[[nodiscard]] std::optional<VolumeState> volumeState(int descriptor);

/// Errors that the device has ever shown to this volume; all stay 0 on a sound one.
struct DeviceErrors {
    std::uint64_t write = 0;
    std::uint64_t read = 0;
    std::uint64_t flush = 0;
    std::uint64_t corruption = 0;
    std::uint64_t generation = 0;

    [[nodiscard]] std::uint64_t sum() const { return write + read + flush + corruption + generation; }

    [[nodiscard]] bool none() const { return sum() == 0; }
};

/// Sums over all devices of the volume. Empty when the descriptor lies on no Btrfs volume.
[[nodiscard]] std::optional<DeviceErrors> deviceErrors(int descriptor);

} // namespace ferrobank::drive
