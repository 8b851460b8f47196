#include "platform/FileLock.h"

#include "platform/Failure.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

namespace ferrobank::drive {

namespace {

struct flock wholeFile()
{
    struct flock lock{};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

/// False with `errno` where somebody else has it or it cannot be had. Having it already is fine.
bool lockWhole(int file)
{
    struct flock lock = wholeFile();
    return ::flock(file, LOCK_EX | LOCK_NB) == 0 && ::fcntl(file, F_OFD_SETLK, &lock) == 0;
}

bool isOpenOn(int descriptor, const std::filesystem::path& path)
{
    struct stat opened{};
    struct stat named{};
    return ::fstat(descriptor, &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           S_ISREG(opened.st_mode) && opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

} // namespace

std::optional<FileLock> FileLock::tryTake(const std::filesystem::path& path)
{
    FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) {
        throw systemFailure("Cannot open " + path.string(), errno);
    }
    if (!lockWhole(file.get())) {
        if (errno == EWOULDBLOCK || errno == EACCES) {
            return std::nullopt;
        }
        throw systemFailure("Cannot lock " + path.string(), errno);
    }
    return FileLock(std::move(file));
}

std::optional<FileLock> FileLock::inherit(int descriptor, const std::filesystem::path& path)
{
    if (!isOpenOn(descriptor, path) || !lockWhole(descriptor)) {
        return std::nullopt;
    }
    ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    return FileLock(FileDescriptor(descriptor));
}

bool FileLock::isHeld(const std::filesystem::path& path)
{
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!file) {
        return false;
    }
    struct flock lock = wholeFile();
    return ::fcntl(file.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

} // namespace ferrobank::drive
