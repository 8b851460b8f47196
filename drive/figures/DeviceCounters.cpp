#include "figures/DeviceCounters.h"

#include "platform/Files.h"

#include <linux/btrfs.h>
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
