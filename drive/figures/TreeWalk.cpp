#include "figures/TreeWalk.h"

#include "platform/Failure.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/btrfs.h>
#include <linux/btrfs_tree.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ferrobank::drive {

namespace {

constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
constexpr unsigned kEntriesBetweenStops = 256;

struct Device {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;

    bool operator==(const Device&) const = default;
};

Device deviceOf(const struct statx& status)
{
    return {status.stx_dev_major, status.stx_dev_minor};
}

bool look(int folder, const char* name, struct statx& status)
{
    const int flags =
        AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC | (*name == '\0' ? AT_EMPTY_PATH : 0);
    return ::statx(folder, name, flags, STATX_BASIC_STATS, &status) == 0;
}

std::uint64_t volumeOf(int folder)
{
    btrfs_ioctl_ino_lookup_args question{};
    question.objectid = BTRFS_FIRST_FREE_OBJECTID;
    return ::ioctl(folder, BTRFS_IOC_INO_LOOKUP, &question) == 0 ? question.treeid : 0;
}

bool isReadOnlyVolume(int folder)
{
    __u64 flags = 0;
    return ::ioctl(folder, BTRFS_IOC_SUBVOL_GETFLAGS, &flags) == 0 && (flags & BTRFS_SUBVOL_RDONLY) != 0;
}

bool vanished(int error)
{
    return error == ENOENT || error == ENOTDIR || error == ELOOP;
}

/// A folder that the walk is inside of, with the subfolders that are still to come.
struct Level {
    std::string name;
    Device device;
    std::uint64_t inode = 0;
    std::uint64_t volume = 0;
    bool readOnly = false;
    std::vector<std::string> subfolders;
    std::size_t next = 0;
};

class Walker {
public:
    Walker(FileDescriptor root, TreeVisitor& visitor, const std::stop_token& stop, ToolFolder toolFolder)
        : _root(std::move(root)), _visitor(visitor), _stop(stop), _toolFolder(toolFolder)
    {}

    WalkEnd run()
    {
        // Opened anew: a duplicate would share the place up to which somebody has read the folder.
        FileDescriptor folder(::openat(_root.get(), ".", kOpenFolder));
        if (!folder) {
            throw systemFailure("Cannot read the drive", errno);
        }
        enter(std::move(folder), std::string());
        while (!_levels.empty() && !_cancelled) {
            Level& level = _levels.back();
            if (level.next == level.subfolders.size()) {
                ascend();
            } else {
                descend(std::move(level.subfolders[level.next++]));
            }
        }
        if (_cancelled) {
            return WalkEnd::Cancelled;
        }
        return _unreadable ? WalkEnd::Unreadable : WalkEnd::Complete;
    }

private:
    void reportUnreadable(const char* name, int error)
    {
        _unreadable = true;
        _visitor.unreadable(name, error);
    }

    void descend(std::string name)
    {
        FileDescriptor folder(::openat(_current.get(), name.c_str(), kOpenFolder));
        if (folder) {
            enter(std::move(folder), std::move(name));
        } else if (!vanished(errno)) {
            reportUnreadable(name.c_str(), errno);
        }
    }

    void enter(FileDescriptor folder, std::string name)
    {
        struct statx status{};
        if (!look(folder.get(), "", status)) {
            reportUnreadable(name.c_str(), errno);
            return;
        }
        const bool isRoot = _levels.empty();
        if (!isRoot && (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0) {
            return;
        }
        Level level;
        level.device = deviceOf(status);
        level.inode = status.stx_ino;
        if (isRoot || level.device != _levels.back().device) {
            level.volume = volumeOf(folder.get());
            level.readOnly = isReadOnlyVolume(folder.get());
        } else {
            level.volume = _levels.back().volume;
            level.readOnly = _levels.back().readOnly;
        }
        const WalkedFolder walked{_folders++, name.c_str(), folder.get(),
                                  &status,    level.volume, level.readOnly};
        if (!_visitor.enterFolder(walked)) {
            return;
        }
        _current = std::move(folder);
        _levels.push_back(std::move(level));
        readEntries(walked);
        _levels.back().name = std::move(name);
    }

    void readEntries(const WalkedFolder& folder)
    {
        for (;;) {
            const ssize_t filled = ::getdents64(_current.get(), _buffer.data(), _buffer.size());
            if (filled < 0) {
                reportUnreadable("", errno);
                return;
            }
            if (filled == 0) {
                return;
            }
            for (ssize_t position = 0; position < filled;) {
                const auto* entry = reinterpret_cast<const dirent64*>(_buffer.data() + position);
                position += entry->d_reclen;
                if (++_entries % kEntriesBetweenStops == 0 && _stop.stop_requested()) {
                    _cancelled = true;
                    return;
                }
                readEntry(folder, *entry);
            }
        }
    }

    void readEntry(const WalkedFolder& folder, const dirent64& entry)
    {
        const char* name = entry.d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) {
            return;
        }
        if (_levels.size() == 1 && _toolFolder == ToolFolder::Skip && std::strcmp(name, kToolFolder) == 0) {
            return;
        }
        if (entry.d_type == DT_DIR) {
            _levels.back().subfolders.emplace_back(name);
            return;
        }
        struct statx status{};
        if (!look(_current.get(), name, status)) {
            if (!vanished(errno)) {
                reportUnreadable(name, errno);
            }
            return;
        }
        if (S_ISDIR(status.stx_mode)) {
            _levels.back().subfolders.emplace_back(name);
            return;
        }
        _visitor.visit({&folder, name, &status});
    }

    void ascend()
    {
        _levels.pop_back();
        _visitor.leaveFolder();
        if (_levels.empty()) {
            return;
        }
        FileDescriptor parent(::openat(_current.get(), "..", kOpenFolder));
        if (!parent || !isLevel(parent.get())) {
            parent = reopenFromRoot();
        }
        if (!parent) {
            // Somebody moved the folder away under the walk; its remaining subfolders are out of reach.
            reportUnreadable("", ENOENT);
            _levels.back().next = _levels.back().subfolders.size();
            return;
        }
        _current = std::move(parent);
    }

    bool isLevel(int folder) const
    {
        struct statx status{};
        return look(folder, "", status) && deviceOf(status) == _levels.back().device &&
               status.stx_ino == _levels.back().inode;
    }

    FileDescriptor reopenFromRoot() const
    {
        FileDescriptor folder(::openat(_root.get(), ".", kOpenFolder));
        for (std::size_t depth = 1; folder && depth < _levels.size(); ++depth) {
            folder = FileDescriptor(::openat(folder.get(), _levels[depth].name.c_str(), kOpenFolder));
        }
        return folder && isLevel(folder.get()) ? std::move(folder) : FileDescriptor();
    }

    FileDescriptor _root;
    FileDescriptor _current;
    TreeVisitor& _visitor;
    const std::stop_token& _stop;
    ToolFolder _toolFolder;
    std::vector<Level> _levels;
    std::uint32_t _folders = 0;
    unsigned _entries = 0;
    bool _unreadable = false;
    bool _cancelled = false;
    alignas(dirent64) std::array<char, 65536> _buffer{};
};

std::uint64_t mixed(std::uint64_t value)
{
    value ^= value >> 30U;
    value *= 0xbf58476d1ce4e5b9U;
    value ^= value >> 27U;
    value *= 0x94d049bb133111ebU;
    return value ^ (value >> 31U);
}

} // namespace

WalkEnd walkTree(FileDescriptor root, TreeVisitor& visitor, const std::stop_token& stop,
                 ToolFolder toolFolder)
{
    const auto walker = std::make_unique<Walker>(std::move(root), visitor, stop, toolFolder);
    return walker->run();
}

WalkEnd walkTree(const std::filesystem::path& root, TreeVisitor& visitor, const std::stop_token& stop,
                 ToolFolder toolFolder)
{
    FileDescriptor folder(::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
        throw systemFailure("Cannot read " + root.string(), errno);
    }
    return walkTree(std::move(folder), visitor, stop, toolFolder);
}

std::uint64_t fileIdentity(std::uint64_t volume, std::uint64_t inode)
{
    const std::uint64_t identity = inode ^ mixed(volume);
    return identity == 0 ? 1 : identity;
}

} // namespace ferrobank::drive
