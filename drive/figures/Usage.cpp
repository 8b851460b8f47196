#include "figures/Usage.h"

namespace ferrobank::drive {

namespace {

/// The unit of `stx_blocks`, whatever the file system's block size.
constexpr std::uint64_t kStatUnit = 512;

} // namespace

bool UsageSum::enterFolder(const WalkedFolder&)
{
    ++_usage.folders;
    return true;
}

void UsageSum::visit(const WalkedEntry& entry)
{
    count(entry);
}

bool UsageSum::count(const WalkedEntry& entry)
{
    const struct statx& status = *entry.status;
    if (!S_ISREG(status.stx_mode)) {
        return false;
    }
    if (status.stx_nlink > 1 && !_linked.add(fileIdentity(entry.folder->volume, status.stx_ino))) {
        return false;
    }
    _usage.bytes += status.stx_blocks * kStatUnit;
    ++_usage.files;
    return true;
}

} // namespace ferrobank::drive
