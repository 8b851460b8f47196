#include "mounting/FilesSubvolume.h"

#include "platform/Failure.h"
#include "platform/FileDescriptor.h"

#include <fcntl.h>
#include <linux/btrfs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace ferrobank::drive {

namespace {

constexpr const char* kAttempt = "The new drive could not be prepared";
constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

} // namespace

void ensureFilesSubvolume(const std::filesystem::path& topLevel, uid_t owner, gid_t group)
{
    const FileDescriptor top(::open(topLevel.c_str(), kFolderFlags));
    if (!top) {
        throw systemFailure(kAttempt, errno);
    }
    ensureFilesSubvolume(top.get(), owner, group);
}

void ensureFilesSubvolume(int topLevel, uid_t owner, gid_t group)
{
    const FileDescriptor parent(::openat(topLevel, "u", kFolderFlags));
    if (!parent) {
        throw systemFailure(kAttempt, errno);
    }
    btrfs_ioctl_vol_args arguments{};
    std::strncpy(arguments.name, "files", sizeof arguments.name - 1);
    if (::ioctl(parent.get(), BTRFS_IOC_SUBVOL_CREATE, &arguments) != 0 && errno != EEXIST) {
        throw systemFailure(kAttempt, errno);
    }
    const FileDescriptor files(::openat(parent.get(), "files", kFolderFlags));
    if (!files || ::fchmod(files.get(), 0700) != 0 || ::fchown(files.get(), owner, group) != 0 ||
        ::syncfs(files.get()) != 0)
    {
        throw systemFailure(kAttempt, errno);
    }
}

} // namespace ferrobank::drive
