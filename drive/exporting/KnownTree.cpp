#include "exporting/KnownTree.h"

namespace ferrobank::drive {

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kDoubtful = 2 * kSecond;

std::int64_t nanoseconds(const statx_timestamp& time)
{
    return time.tv_sec * kSecond + time.tv_nsec;
}

} // namespace

KnownTree::KnownTree(timespec snapshotTime)
    : _trustedBefore(snapshotTime.tv_sec * kSecond + snapshotTime.tv_nsec - kDoubtful)
{}

KnownTree::Entry KnownTree::entryOf(const struct statx& status)
{
    return {.inode = status.stx_ino,
            .size = status.stx_size,
            .modified = nanoseconds(status.stx_mtime),
            .changed = nanoseconds(status.stx_ctime),
            .mode = status.stx_mode};
}

void KnownTree::note(const std::string& path, const struct statx& status)
{
    _entries[path] = entryOf(status);
    if (S_ISREG(status.stx_mode) && status.stx_nlink > 1) {
        _linked[status.stx_ino].push_back(path);
    }
}

const std::vector<std::string>* KnownTree::linkedNames(std::uint64_t inode) const
{
    const auto names = _linked.find(inode);
    return names == _linked.end() ? nullptr : &names->second;
}

bool KnownTree::isUnchanged(const std::string& path, const struct statx& status) const
{
    const auto known = _entries.find(path);
    return known != _entries.end() && known->second == entryOf(status) &&
           known->second.changed < _trustedBefore;
}

} // namespace ferrobank::drive
