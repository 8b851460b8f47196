#include "platform/FileLock.h"

#include "platform/Failure.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

namespace ferrobank::drive {

std::optional<FileLock> FileLock::tryTake(const std::filesystem::path& path)
{
    FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) {
        throw systemFailure("Cannot open " + path.string(), errno);
    }
    if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK) {
            return std::nullopt;
        }
        throw systemFailure("Cannot lock " + path.string(), errno);
    }
    return FileLock(std::move(file));
}

FileLock FileLock::inherit(int descriptor)
{
    ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    return FileLock(FileDescriptor(descriptor));
}

bool FileLock::isHeld(const std::filesystem::path& path)
{
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!file) {
        return false;
    }
    return ::flock(file.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

} // namespace ferrobank::drive
