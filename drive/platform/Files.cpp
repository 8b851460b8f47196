#include "platform/Files.h"

#include "platform/Failure.h"
#include "platform/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace ferrobank::drive {

namespace {

/// 0, or the error. A file system that has no such thing for folders keeps names by its own means.
int syncFolder(const std::filesystem::path& folder)
{
    const FileDescriptor opened(
        ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened) {
        return errno;
    }
    return ::fsync(opened.get()) == 0 || errno == EINVAL || errno == ENOTSUP ? 0 : errno;
}

} // namespace

std::optional<std::string> readSmallFile(const std::filesystem::path& path, std::size_t limit)
{
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (!file) {
        return std::nullopt;
    }
    std::string text;
    char piece[16 * 1024];
    for (;;) {
        const ssize_t got = ::read(file.get(), piece, sizeof piece);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0 || text.size() + static_cast<std::size_t>(got) > limit) {
            return std::nullopt;
        }
        if (got == 0) {
            return text;
        }
        text.append(piece, static_cast<std::size_t>(got));
    }
}

void replaceFile(const std::filesystem::path& path, std::string_view text, Durability durability)
{
    const std::string attempt = "Cannot write " + path.string();
    std::string temporary = path.string() + ".XXXXXX";
    FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!file) {
        throw systemFailure(attempt, errno);
    }
    int error = 0;
    while (!text.empty() && error == 0) {
        const ssize_t put = ::write(file.get(), text.data(), text.size());
        if (put >= 0) {
            text.remove_prefix(static_cast<std::size_t>(put));
        } else if (errno != EINTR) {
            error = errno;
        }
    }
    if (error == 0 && durability == Durability::Synced && ::fsync(file.get()) != 0) {
        error = errno;
    }
    file.reset();
    if (error == 0 && ::rename(temporary.c_str(), path.c_str()) != 0) {
        error = errno;
    }
    if (error != 0) {
        ::unlink(temporary.c_str());
        throw systemFailure(attempt, error);
    }
    if (durability == Durability::Synced) {
        error = syncFolder(path.parent_path());
    }
    if (error != 0) {
        throw systemFailure(attempt, error);
    }
}

void ensurePrivateFolder(const std::filesystem::path& folder)
{
    struct stat status{};
    if (::lstat(folder.c_str(), &status) != 0) {
        if (errno != ENOENT) {
            throw systemFailure("Cannot look at " + folder.string(), errno);
        }
        const std::filesystem::path parent = folder.parent_path();
        if (!parent.empty() && parent != folder && ::access(parent.c_str(), F_OK) != 0) {
            ensurePrivateFolder(parent);
        }
        if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
            throw systemFailure("Cannot make the folder " + folder.string(), errno);
        }
        if (::lstat(folder.c_str(), &status) != 0) {
            throw systemFailure("Cannot look at " + folder.string(), errno);
        }
    }
    if (!S_ISDIR(status.st_mode)) {
        throw Failure(folder.string() + " is not a folder.", "not-a-folder");
    }
    if (status.st_uid != ::geteuid()) {
        throw Failure(folder.string() + " belongs to another user.", "foreign-owner");
    }
}

void removeIfPresent(const std::filesystem::path& path)
{
    if (::remove(path.c_str()) != 0 && errno != ENOENT) {
        throw systemFailure("Cannot remove " + path.string(), errno);
    }
}

std::optional<FileIdentity> identityOf(const std::filesystem::path& path)
{
    struct stat status{};
    if (::stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return FileIdentity{.device = status.st_dev,
                        .inode = status.st_ino,
                        .modified = status.st_mtim.tv_sec * 1'000'000'000LL + status.st_mtim.tv_nsec};
}

} // namespace ferrobank::drive
