#include "Platform/linux/desktop/FileWatch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <cstring>
#include <system_error>
#include <utility>

namespace ferrobank {

namespace {

constexpr uint32_t kEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE |
                             IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

/// The folder to watch for a file, and the entry in it that leads to the file: the file itself, or the first
/// folder on the way to it that is missing.
std::pair<std::filesystem::path, std::string> watchPoint(const std::filesystem::path& file)
{
    std::filesystem::path entry = file;
    std::error_code failed; // a folder that cannot be asked about is as good as missing
    while (entry.has_relative_path() && !std::filesystem::is_directory(entry.parent_path(), failed)) {
        entry = entry.parent_path();
    }
    return {entry.parent_path(), entry.filename()};
}

} // namespace

FileWatch::FileWatch(std::vector<std::filesystem::path> files, std::function<void()> touched)
    : _files(std::move(files)),
      _touched(std::move(touched)),
      _inotify(inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
{
    if (_inotify < 0) {
        return;
    }
    watchFolders();
    _readable = std::make_unique<QSocketNotifier>(_inotify, QSocketNotifier::Read);
    QObject::connect(_readable.get(), &QSocketNotifier::activated, _readable.get(), [this] { read(); });
}

FileWatch::~FileWatch()
{
    _readable.reset();
    if (_inotify >= 0) {
        close(_inotify);
    }
}

void FileWatch::watchFolders()
{
    std::map<int, Folder> folders;
    for (const std::filesystem::path& file : _files) {
        const auto [path, name] = watchPoint(file);
        const int watch = inotify_add_watch(_inotify, path.c_str(), kEvents);
        if (watch >= 0) {
            folders[watch].path = path;
            folders[watch].names.insert(name);
        }
    }
    for (const auto& [watch, folder] : _folders) {
        if (!folders.contains(watch)) {
            inotify_rm_watch(_inotify, watch);
        }
    }
    _folders = std::move(folders);
}

void FileWatch::read()
{
    bool touched = false;
    alignas(inotify_event) char events[4096];
    ssize_t size = 0;
    while ((size = ::read(_inotify, events, sizeof events)) > 0) {
        for (const char* at = events; at < events + size;) {
            const auto* event = reinterpret_cast<const inotify_event*>(at);
            at += sizeof(inotify_event) + event->len;
            const auto folder = _folders.find(event->wd);
            const bool ownEnd = (event->mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_Q_OVERFLOW)) != 0;
            const bool known = folder != _folders.end();
            touched = touched || (event->mask & IN_Q_OVERFLOW) != 0 || (known && ownEnd) ||
                      (known && event->len > 0 && folder->second.names.contains(event->name));
        }
    }
    if (touched) {
        watchFolders();
        _touched();
    }
}

} // namespace ferrobank
