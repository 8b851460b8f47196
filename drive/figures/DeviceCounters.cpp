#include "figures/DeviceCounters.h"

#include "platform/FileDescriptor.h"
#include "platform/Files.h"

#include <fcntl.h>
#include <linux/btrfs.h>
#include <linux/btrfs_tree.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <charconv>
#include <string_view>

namespace ferrobank::drive {

namespace {

std::optional<std::uint64_t> numberIn(const std::filesystem::path& file)
{
    const std::optional<std::string> text = readSmallFile(file);
    std::uint64_t number = 0;
    if (!text || std::from_chars(text->data(), text->data() + text->size(), number).ec != std::errc()) {
        return std::nullopt;
    }
    return number;
}

std::string uuidText(const unsigned char* bytes)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (int index = 0; index < BTRFS_FSID_SIZE; ++index) {
        if (index == 4 || index == 6 || index == 8 || index == 10) {
            text += '-';
        }
        text += kDigits[bytes[index] >> 4U];
        text += kDigits[bytes[index] & 15U];
    }
    return text;
}

/// The number of the guard's subvolume; 0 without one.
std::uint64_t guardSubvolume(int root)
{
    const FileDescriptor folder(
        ::openat(root, kGuardSubvolume, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    btrfs_ioctl_ino_lookup_args question{};
    question.objectid = BTRFS_FIRST_FREE_OBJECTID;
    return folder && ::ioctl(folder.get(), BTRFS_IOC_INO_LOOKUP, &question) == 0 ? question.treeid : 0;
}

btrfs_ioctl_fs_info_args askedFor(std::uint64_t flags)
{
    btrfs_ioctl_fs_info_args info{};
    info.flags = flags;
    return info;
}

} // namespace

std::optional<std::uint64_t> bytesInUse(const std::string& uuid, std::uint64_t guardBytes,
                                        const std::filesystem::path& volumes)
{
    std::uint64_t sum = 0;
    for (const char* kind : {"data", "metadata", "system"}) {
        const auto used = numberIn(volumes / uuid / "allocation" / kind / "disk_used");
        if (!used) {
            return std::nullopt;
        }
        sum += *used;
    }
    return sum > guardBytes ? sum - guardBytes : 0;
}

std::uint64_t bytesOnTheirWay(const std::string& uuid, const std::filesystem::path& volumes)
{
    const std::filesystem::path data = volumes / uuid / "allocation/data";
    return numberIn(data / "bytes_may_use").value_or(0) + numberIn(data / "bytes_reserved").value_or(0);
}

std::uint64_t savedBytes(std::uint64_t volumeUsed, std::uint64_t inUse)
{
    return volumeUsed > inUse ? volumeUsed - inUse : 0;
}

std::optional<std::uint64_t> allocatedBytes(const std::filesystem::path& file)
{
    struct stat status{};
    if (::stat(file.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(status.st_blocks) * 512;
}

std::optional<std::uint64_t> volumeGeneration(const std::string& uuid, const std::filesystem::path& volumes)
{
    return numberIn(volumes / uuid / "generation");
}

std::optional<std::uint64_t> filesGeneration(int folder, const std::string& uuid)
{
    btrfs_ioctl_get_subvol_info_args files{};
    btrfs_ioctl_get_subvol_rootref_args below{};
    // Some kernels answer 1 where all went well.
    if (::ioctl(folder, BTRFS_IOC_GET_SUBVOL_INFO, &files) < 0 ||
        ::ioctl(folder, BTRFS_IOC_GET_SUBVOL_ROOTREF, &below) < 0 || below.num_items > 1 ||
        (below.num_items == 1 && below.rootref[0].treeid != guardSubvolume(folder)))
    {
        return volumeGeneration(uuid);
    }
    return files.generation;
}

std::optional<VolumeState> volumeState(int descriptor)
{
    btrfs_ioctl_fs_info_args info = askedFor(BTRFS_FS_INFO_FLAG_GENERATION);
    if (::ioctl(descriptor, BTRFS_IOC_FS_INFO, &info) != 0) {
        return std::nullopt;
    }
    return VolumeState{uuidText(info.fsid), info.generation};
}

std::optional<DeviceErrors> deviceErrors(int descriptor)
{
    btrfs_ioctl_fs_info_args info = askedFor(0);
    if (::ioctl(descriptor, BTRFS_IOC_FS_INFO, &info) != 0) {
        return std::nullopt;
    }
    DeviceErrors errors;
    for (std::uint64_t device = 0; device <= info.max_id; ++device) {
        btrfs_ioctl_get_dev_stats stats{};
        stats.devid = device;
        stats.nr_items = BTRFS_DEV_STAT_VALUES_MAX;
        if (::ioctl(descriptor, BTRFS_IOC_GET_DEV_STATS, &stats) != 0) {
            continue; // device numbers have gaps
        }
        errors.write += stats.values[BTRFS_DEV_STAT_WRITE_ERRS];
        errors.read += stats.values[BTRFS_DEV_STAT_READ_ERRS];
        errors.flush += stats.values[BTRFS_DEV_STAT_FLUSH_ERRS];
        errors.corruption += stats.values[BTRFS_DEV_STAT_CORRUPTION_ERRS];
        errors.generation += stats.values[BTRFS_DEV_STAT_GENERATION_ERRS];
    }
    return errors;
}

} // namespace ferrobank::drive
