#include "helper/RootsFolders.h"

#include "platform/Failure.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace ferrobank::drive {

namespace {

constexpr int kFolderFlags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

} // namespace

bool isOnlyRootsToWrite(const struct stat& facts)
{
    return facts.st_uid == 0 && !S_ISLNK(facts.st_mode) && (facts.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool isOnlyRootsToWrite(const std::filesystem::path& path, const std::filesystem::path& top)
{
    if (path == top && path != path.root_path()) {
        return true;
    }
    struct stat facts{};
    if (::lstat(path.c_str(), &facts) != 0 || !isOnlyRootsToWrite(facts)) {
        return false;
    }
    return path == path.root_path() || isOnlyRootsToWrite(path.parent_path(), top);
}

FileDescriptor openRootsFolder(const std::filesystem::path& folder, const std::filesystem::path& top)
{
    FileDescriptor at(::open(top.c_str(), kFolderFlags));
    for (const std::filesystem::path& name : folder.lexically_relative(top)) {
        if (::mkdirat(at.get(), name.c_str(), 0755) != 0 && errno != EEXIST) {
            throw systemFailure("Cannot make the folder " + folder.string(), errno);
        }
        at = FileDescriptor(::openat(at.get(), name.c_str(), kFolderFlags));
        struct stat facts{};
        if (!at || ::fstat(at.get(), &facts) != 0) {
            throw systemFailure("Cannot open the folder " + folder.string(), errno);
        }
        if (!isOnlyRootsToWrite(facts)) {
            throw Failure("Others than the administrator can change the folder " + folder.string() + ".",
                          "not-roots");
        }
    }
    return at;
}

} // namespace ferrobank::drive
