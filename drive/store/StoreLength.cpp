#include "store/StoreLength.h"

#include "platform/Failure.h"
#include "platform/FileDescriptor.h"
#include "store/Superblock.h"

#include <fcntl.h>
#include <linux/btrfs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

namespace ferrobank::drive {

namespace {

constexpr std::uint64_t kGiB = 1ULL << 30U;
constexpr std::uint64_t kLeastLength = 16 * kGiB;

} // namespace

std::uint64_t storeLength(std::uint64_t hostTotal)
{
    return std::max((hostTotal + kGiB - 1) / kGiB * kGiB, kLeastLength);
}

std::uint64_t hostBytes(const std::filesystem::path& folder)
{
    struct statvfs host{};
    if (::statvfs(folder.c_str(), &host) != 0) {
        throw systemFailure("Cannot look at " + folder.string(), errno);
    }
    return static_cast<std::uint64_t>(host.f_blocks) * host.f_frsize;
}

void lengthenStore(const Paths& paths, const Log& log)
{
    struct stat status{};
    if (::lstat(paths.image.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return;
    }
    const std::uint64_t wanted = storeLength(hostBytes(paths.store));
    if (wanted <= static_cast<std::uint64_t>(status.st_size)) {
        return;
    }
    const FileDescriptor image(::open(paths.image.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!image || ::ftruncate(image.get(), static_cast<off_t>(wanted)) != 0) {
        log.write(std::string("The drive could not be made as large as its disk: ") + std::strerror(errno) +
                  ".");
        return;
    }
    log.write("This computer's disk has grown; there is room for a drive of " +
              std::to_string(wanted / kGiB) + " GiB.");
}

void growVolume(const Paths& paths, const std::filesystem::path& mountPoint, const Log& log)
{
    struct stat status{};
    const std::optional<Superblock> superblock = readSuperblock(paths.image);
    if (!superblock || ::stat(paths.image.c_str(), &status) != 0 ||
        static_cast<std::uint64_t>(status.st_size) < superblock->totalBytes + kGiB)
    {
        return;
    }
    const FileDescriptor folder(::open(mountPoint.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    btrfs_ioctl_vol_args wish{};
    std::strcpy(wish.name, "max");
    if (folder && ::ioctl(folder.get(), BTRFS_IOC_RESIZE, &wish) == 0) {
        log.write("The drive is as large as its disk again.");
        return;
    }
    if (errno == EPERM) {
        log.write("The drive is smaller than its disk. An administrator can change that with: btrfs "
                  "filesystem resize "
                  "max " +
                  mountPoint.string());
        return;
    }
    log.write(std::string("The drive could not be made as large as its disk: ") + std::strerror(errno) + ".");
}

} // namespace ferrobank::drive
