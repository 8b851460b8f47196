#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace ferrobank::drive {

/// What an export knows of the drive: for every file and folder that was copied, the inode and the times that
/// change with it, in nanoseconds. A later look at the drive tells by them what is still the same. Plain
/// value of one export; one thread.
///
/// The change time is set by the kernel and nobody can set it back, so equal numbers mean an untouched file,
/// with one exception: it moves in steps of some milliseconds, and a snapshot may hold the time of a write
/// whose bytes were still on their way. What changed shortly before the snapshot or after it is therefore
/// never taken for unchanged; its content has to tell.
class KnownTree {
public:
    /// `snapshotTime` is the wall clock from before the snapshot was asked for.
    explicit KnownTree(timespec snapshotTime);

    /// `path` is below the drive's root.
    void note(const std::string& path, const struct statx& status);

    [[nodiscard]] bool isUnchanged(const std::string& path, const struct statx& status) const;

    /// The names under which a file with several was noted; `inode` alone does not tell the subvolume.
    [[nodiscard]] const std::vector<std::string>* linkedNames(std::uint64_t inode) const;

private:
    struct Entry {
        std::uint64_t inode = 0;
        std::uint64_t size = 0;
        std::int64_t modified = 0;
        std::int64_t changed = 0;
        std::uint32_t mode = 0;

        bool operator==(const Entry&) const = default;
    };

    [[nodiscard]] static Entry entryOf(const struct statx& status);

    std::int64_t _trustedBefore = 0;
    std::unordered_map<std::string, Entry> _entries;
    std::unordered_map<std::uint64_t, std::vector<std::string>> _linked;
};

} // namespace ferrobank::drive
