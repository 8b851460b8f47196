#pragma once

#include <QtCore/QSocketNotifier>

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace ferrobank {

/// Follows single files, there or not, in folders that may come and go, through inotify. Main thread.
///
/// `touched` is called from the event loop after one of the files may have appeared, gone, moved or changed.
/// A system that gives no watches leaves it silent.
class FileWatch {
public:
    FileWatch(std::vector<std::filesystem::path> files, std::function<void()> touched);
    ~FileWatch();
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

private:
    struct Folder {
        std::filesystem::path path;
        std::set<std::string> names; ///< of the entries in it that matter
    };

    void watchFolders();
    void read();

    std::vector<std::filesystem::path> _files;
    std::function<void()> _touched;
    int _inotify;
    std::map<int, Folder> _folders; ///< by watch descriptor
    std::unique_ptr<QSocketNotifier> _readable;
};

} // namespace ferrobank
