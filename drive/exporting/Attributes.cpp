#include "exporting/Attributes.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>
#include <vector>

namespace ferrobank::drive {

namespace {

constexpr mode_t kModeBits = 07777;
/// What the kernel allows for one value and for the list of names.
constexpr std::size_t kLargestAttribute = 65536;

using Times = std::array<timespec, 2>;

timespec timeFrom(const statx_timestamp& time)
{
    return {static_cast<time_t>(time.tv_sec), static_cast<long>(time.tv_nsec)};
}

Times timesOf(const struct statx& status)
{
    return {timeFrom(status.stx_atime), timeFrom(status.stx_mtime)};
}

/// Attributes with the prefix "btrfs." steer that file system and mean nothing elsewhere; those of the system
/// belong to whoever administers the destination.
bool isCopied(std::string_view name)
{
    const bool own = name.starts_with("user.") || name.starts_with("system.posix_acl_");
    const bool administrators = name.starts_with("trusted.") || name == "security.capability";
    return own || (administrators && ::geteuid() == 0);
}

bool holdsName(std::string_view list, std::string_view name)
{
    for (; !list.empty(); list.remove_prefix(std::min(list.size(), list.find('\0') + 1))) {
        if (list.substr(0, list.find('\0')) == name) {
            return true;
        }
    }
    return false;
}

/// An earlier copy may have what the original has lost since.
void removeOthers(std::string_view wanted, int target)
{
    char names[kLargestAttribute];
    const ssize_t length = ::flistxattr(target, names, sizeof names);
    for (std::string_view rest(names, length > 0 ? static_cast<std::size_t>(length) : 0); !rest.empty();) {
        const std::string name(rest.substr(0, rest.find('\0')));
        rest.remove_prefix(name.size() + 1);
        if (isCopied(name) && !holdsName(wanted, name)) {
            ::fremovexattr(target, name.c_str());
        }
    }
}

void copyExtendedAttributes(int source, int target, const std::string& path, Differences& differences,
                            Existing existing)
{
    // Left as it is: clearing it would take longer than most files have attributes.
    char names[kLargestAttribute];
    const ssize_t length = ::flistxattr(source, names, sizeof names);
    if (length < 0) {
        if (errno != ENOTSUP) {
            differences.add(path, "has attributes that could not be read", errno);
        }
        return;
    }
    if (existing == Existing::Replace) {
        removeOthers({names, static_cast<std::size_t>(length)}, target);
    }
    std::vector<char> value;
    for (std::string_view rest(names, static_cast<std::size_t>(length)); !rest.empty();) {
        const std::string name(rest.substr(0, rest.find('\0')));
        rest.remove_prefix(name.size() + 1);
        if (!isCopied(name)) {
            continue;
        }
        value.resize(kLargestAttribute);
        const ssize_t size = ::fgetxattr(source, name.c_str(), value.data(), value.size());
        if (size < 0 ||
            ::fsetxattr(target, name.c_str(), value.data(), static_cast<std::size_t>(size), 0) != 0)
        {
            differences.add(path, "lost its attribute " + name, errno);
        }
    }
}

} // namespace

void copyAttributes(int source, const struct statx& status, int target, const std::string& path,
                    Differences& differences, Existing existing)
{
    struct stat made{};
    ::fstat(target, &made);
    const bool otherOwner = made.st_uid != status.stx_uid || made.st_gid != status.stx_gid;
    if (::geteuid() == 0 && otherOwner && ::fchown(target, status.stx_uid, status.stx_gid) != 0) {
        differences.add(path, "could not be given its owner", errno);
    }
    copyExtendedAttributes(source, target, path, differences, existing);
    const mode_t mode = status.stx_mode & kModeBits;
    // Changing the owner may have taken bits away.
    ::fstat(target, &made);
    if ((made.st_mode & kModeBits) != mode && ::fchmod(target, mode) != 0) {
        differences.add(path, "could not be given its permissions", errno);
    }
    if (::futimens(target, timesOf(status).data()) != 0) {
        differences.add(path, "could not be given its times", errno);
    }
}

std::string droppedFlags(int source)
{
    // Not those of compression: the file system sets them by itself.
    constexpr std::array<std::pair<int, char>, 7> kLetters{{{FS_SYNC_FL, 'S'},
                                                            {FS_DIRSYNC_FL, 'D'},
                                                            {FS_IMMUTABLE_FL, 'i'},
                                                            {FS_APPEND_FL, 'a'},
                                                            {FS_NODUMP_FL, 'd'},
                                                            {FS_NOATIME_FL, 'A'},
                                                            {FS_NOCOW_FL, 'C'}}};
    int flags = 0;
    std::string letters;
    if (::ioctl(source, FS_IOC_GETFLAGS, &flags) == 0) {
        for (const auto& [flag, letter] : kLetters) {
            if ((flags & flag) != 0) {
                letters += letter;
            }
        }
    }
    return letters;
}

void copyEntryAttributes(const struct statx& status, int folder, const char* name, const std::string& path,
                         Differences& differences)
{
    if (::geteuid() == 0 &&
        ::fchownat(folder, name, status.stx_uid, status.stx_gid, AT_SYMLINK_NOFOLLOW) != 0)
    {
        differences.add(path, "could not be given its owner", errno);
    }
    if (!S_ISLNK(status.stx_mode) && ::fchmodat(folder, name, status.stx_mode & kModeBits, 0) != 0) {
        differences.add(path, "could not be given its permissions", errno);
    }
    if (::utimensat(folder, name, timesOf(status).data(), AT_SYMLINK_NOFOLLOW) != 0) {
        differences.add(path, "could not be given its times", errno);
    }
}

} // namespace ferrobank::drive
