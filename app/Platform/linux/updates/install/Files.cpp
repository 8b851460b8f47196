#include "Platform/linux/updates/install/Files.h"

#include "Platform/linux/Descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>

namespace ferrobank::updates {

int writeAll(int descriptor, std::span<const std::byte> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return errno;
        if (count > 0)
            bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return 0;
}

int writeFileAtomically(const std::filesystem::path& file, std::string_view text)
{
    std::filesystem::path beside = file;
    beside += ".new";
    ::unlink(beside.c_str());
    Descriptor descriptor(::open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!descriptor.isOpen())
        return errno;
    int error = writeAll(descriptor.number(), std::as_bytes(std::span(text)));
    if (error == 0 && ::fsync(descriptor.number()) != 0)
        error = errno;
    if (!descriptor.closeChecked() && error == 0)
        error = errno;
    if (error == 0 && ::rename(beside.c_str(), file.c_str()) != 0)
        error = errno;
    if (error != 0) {
        ::unlink(beside.c_str());
        return error;
    }
    return syncFolder(file.parent_path());
}

int overwriteFile(const std::filesystem::path& file, std::string_view text)
{
    Descriptor descriptor(::open(file.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC));
    struct stat facts{};
    if (!descriptor.isOpen() || ::fstat(descriptor.number(), &facts) != 0)
        return errno;
    if (!S_ISREG(facts.st_mode) || facts.st_size != static_cast<off_t>(text.size()))
        return ENOSPC;
    const ssize_t count = ::pwrite(descriptor.number(), text.data(), text.size(), 0);
    if (count != static_cast<ssize_t>(text.size()))
        return count < 0 ? errno : ENOSPC;
    return ::fsync(descriptor.number()) == 0 && descriptor.closeChecked() ? 0 : errno;
}

int syncFolder(const std::filesystem::path& folder)
{
    const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor.isOpen() || ::fsync(descriptor.number()) != 0)
        return errno;
    return 0;
}

} // namespace ferrobank::updates
