#include "sharing/FileTable.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <xxhash.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <utility>

namespace ferrobank::drive {

namespace {

/// One call takes paths of up to 4096 bytes; deeper files are reached in several.
constexpr std::size_t kLongestPath = 3800;

FileDescriptor openBelow(int folder, const std::string& path, int flags)
{
    open_how how{};
    how.flags = static_cast<std::uint64_t>(flags);
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_XDEV;
    return FileDescriptor(static_cast<int>(::syscall(SYS_openat2, folder, path.c_str(), &how, sizeof how)));
}

} // namespace

std::uint64_t stampOf(const struct statx& status)
{
    const std::array<std::int64_t, 4> times{status.stx_mtime.tv_sec, status.stx_mtime.tv_nsec,
                                            status.stx_ctime.tv_sec, status.stx_ctime.tv_nsec};
    return XXH3_64bits(times.data(), sizeof times);
}

FileTable::FileTable(Limits limits, std::function<bool(std::uint64_t)> wanted)
    : _limits(limits), _wanted(std::move(wanted))
{}

bool FileTable::enterFolder(const WalkedFolder& folder)
{
    _path.push_back({folder.name, folder.volume, folder.inReadOnlyVolume});
    return _usage.enterFolder(folder);
}

void FileTable::leaveFolder()
{
    _path.pop_back();
}

void FileTable::unreadable(const char*, int) {}

void FileTable::visit(const WalkedEntry& entry)
{
    if (!_usage.count(entry)) {
        return;
    }
    const struct statx& status = *entry.status;
    // A change time in the future comes from a clock that was set back; such a file is not at work.
    const std::int64_t age = _limits.now - status.stx_ctime.tv_sec;
    const bool quiet = std::abs(age) >= _limits.quietSeconds;
    const std::uint64_t allocated = status.stx_blocks * 512;
    const bool worthIt = std::min<std::uint64_t>(status.stx_size, allocated) >= _limits.smallestFile;
    if (_path.back().readOnly || !worthIt) {
        return;
    }
    if (!quiet) {
        ++_filesAtWork;
        return;
    }
    if (_wanted && !_wanted(status.stx_size)) {
        return;
    }
    ++_wantedFiles;
    _wantedBytes += allocated;
    if (_files.size() == _limits.mostFiles) {
        return;
    }
    FileRecord file;
    file.identity = fileIdentity(entry.folder->volume, status.stx_ino);
    file.size = status.stx_size;
    file.stamp = stampOf(status);
    file.allocated = allocated;
    file.folder = keepFolder(_path.size() - 1);
    file.name = keepName(entry.name);
    _files.push_back(file);
}

std::uint32_t FileTable::keepName(const char* name)
{
    const auto offset = static_cast<std::uint32_t>(_names.size());
    _names.append(name).push_back('\0');
    return offset;
}

std::uint32_t FileTable::keepFolder(std::size_t depth)
{
    if (_path[depth].kept == kNotKept) {
        const std::uint32_t parent = depth == 0 ? kNotKept : keepFolder(depth - 1);
        _path[depth].kept = static_cast<std::uint32_t>(_folders.size());
        _folders.push_back({parent, keepName(_path[depth].name.c_str()), _path[depth].volume});
    }
    return _path[depth].kept;
}

std::string FileTable::pathOf(const FileRecord& file) const
{
    std::vector<std::uint32_t> chain;
    for (std::uint32_t folder = file.folder; _folders[folder].parent != kNotKept;
         folder = _folders[folder].parent)
    {
        chain.push_back(_folders[folder].name);
    }
    std::string path;
    for (auto name = chain.rbegin(); name != chain.rend(); ++name) {
        path.append(_names.c_str() + *name).push_back('/');
    }
    return path.append(_names.c_str() + file.name);
}

FileDescriptor FileTable::open(int root, const FileRecord& file) const
{
    constexpr int kOpenFile = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW;
    std::string path = pathOf(file);
    FileDescriptor folder;
    while (path.size() > kLongestPath) {
        const std::size_t cut = path.rfind('/', kLongestPath);
        folder =
            openBelow(folder ? folder.get() : root, path.substr(0, cut), O_PATH | O_DIRECTORY | O_CLOEXEC);
        if (!folder) {
            return {};
        }
        path.erase(0, cut + 1);
    }
    FileDescriptor opened = openBelow(folder ? folder.get() : root, path, kOpenFile | O_NOATIME);
    if (!opened && errno == EPERM) {
        opened = openBelow(folder ? folder.get() : root, path, kOpenFile); // another owner's file
    }
    if (opened && !unchanged(opened.get(), file)) {
        opened.reset();
        errno = ESTALE;
    }
    return opened;
}

bool FileTable::unchanged(int descriptor, const FileRecord& file) const
{
    struct statx status{};
    if (::statx(descriptor, "", AT_EMPTY_PATH, STATX_BASIC_STATS, &status) != 0 || !S_ISREG(status.stx_mode))
    {
        return false;
    }
    return fileIdentity(_folders[file.folder].volume, status.stx_ino) == file.identity &&
           status.stx_size == file.size && stampOf(status) == file.stamp;
}

} // namespace ferrobank::drive
