#include "Platform/linux/files/CachedLookup.h"

#include "Platform/linux/Descriptor.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>

#include <cerrno>

namespace ferrobank {

std::optional<bool> existsInCache(const char* path)
{
    open_how how{};
    how.flags = O_PATH | O_NOFOLLOW | O_CLOEXEC; // found, not opened
    how.resolve = RESOLVE_CACHED;
    const Descriptor found(static_cast<int>(::syscall(SYS_openat2, AT_FDCWD, path, &how, sizeof how)));
    if (found.isOpen()) {
        return true;
    }
    return errno == ENOENT || errno == ENOTDIR ? std::optional(false) : std::nullopt;
}

} // namespace ferrobank
