#include "exporting/Removal.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>
#include <vector>

namespace ferrobank::drive {

namespace {

constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

FileDescriptor openOwnFolder(int parent, const char* name)
{
    // By a descriptor of the entry itself: a name that became a link meanwhile would change somebody else's.
    const FileDescriptor entry(::openat(parent, name, O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status{};
    if (!entry || ::fstat(entry.get(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        return {};
    }
    if ((status.st_mode & 0700) != 0700) {
        ::chmod(("/proc/self/fd/" + std::to_string(entry.get())).c_str(), 0700);
    }
    return FileDescriptor(::openat(entry.get(), ".", kOpenFolder));
}

struct Level {
    FileDescriptor folder;
    std::string name;
    std::vector<std::string> subfolders;
};

/// Removes what is no folder and remembers the folders.
bool emptyOfFiles(Level& level)
{
    // A descriptor of its own: closing the stream closes it.
    const int opened = ::openat(level.folder.get(), ".", kOpenFolder);
    DIR* const stream = opened < 0 ? nullptr : ::fdopendir(opened);
    if (stream == nullptr) {
        return false;
    }
    bool all = true;
    while (const dirent64* const entry = ::readdir64(stream)) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == ".." || ::unlinkat(opened, entry->d_name, 0) == 0) {
            continue;
        }
        if (errno == EISDIR || errno == EPERM) {
            level.subfolders.emplace_back(name);
        } else {
            all = false;
        }
    }
    ::closedir(stream);
    return all;
}

bool removeFolder(int parent, const char* name, const std::stop_token& stop)
{
    std::vector<Level> levels;
    levels.push_back({openOwnFolder(parent, name), name, {}});
    if (!levels.back().folder) {
        return false;
    }
    bool all = emptyOfFiles(levels.back());
    while (!levels.empty()) {
        if (stop.stop_requested()) {
            return false;
        }
        Level& level = levels.back();
        if (!level.subfolders.empty()) {
            Level next{.folder = {}, .name = std::move(level.subfolders.back()), .subfolders = {}};
            level.subfolders.pop_back();
            next.folder = openOwnFolder(level.folder.get(), next.name.c_str());
            if (next.folder) {
                levels.push_back(std::move(next));
                all = emptyOfFiles(levels.back()) && all;
            } else {
                all = false;
            }
            continue;
        }
        const std::string done = std::move(level.name);
        levels.pop_back();
        const int above = levels.empty() ? parent : levels.back().folder.get();
        all = ::unlinkat(above, done.c_str(), AT_REMOVEDIR) == 0 && all;
    }
    return all;
}

} // namespace

bool removeEntry(int parent, const char* name, const std::stop_token& stop)
{
    if (::unlinkat(parent, name, 0) == 0 || errno == ENOENT) {
        return true;
    }
    return (errno == EISDIR || errno == EPERM) && removeFolder(parent, name, stop);
}

FileDescriptor openParent(int root, const std::string& path, std::string& name)
{
    FileDescriptor folder(::openat(root, ".", kOpenFolder));
    std::size_t begin = 0;
    for (std::size_t end = path.find('/'); folder && end != std::string::npos; end = path.find('/', begin)) {
        folder = FileDescriptor(::openat(folder.get(), path.substr(begin, end - begin).c_str(), kOpenFolder));
        begin = end + 1;
    }
    name = path.substr(begin);
    return folder;
}

} // namespace ferrobank::drive
