#include "exporting/Staging.h"

#include "exporting/Removal.h"
#include "figures/DisplayText.h"
#include "figures/TreeWalk.h"
#include "platform/Failure.h"
#include "platform/Files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace ferrobank::drive {

namespace fs = std::filesystem;

namespace {

constexpr const char* kDriveFile = "drive";
constexpr const char* kFilesFolder = "files";
constexpr const char* kPublishedList = "published";
constexpr const char* kNewList = "published.new";
constexpr std::size_t kListLimit = std::size_t{256} << 20U;
constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

std::string driveText(const std::string& uuid)
{
    return "The copy of the Ferrobank drive " + uuid + " in this folder is not complete.\n";
}

bool isTrial(std::string_view name)
{
    return name.starts_with(kTrialStem);
}

std::vector<std::string> namesIn(int folder)
{
    std::vector<std::string> names;
    const int opened = ::openat(folder, ".", kOpenFolder);
    DIR* const stream = opened < 0 ? nullptr : ::fdopendir(opened);
    if (stream == nullptr) {
        throw systemFailure("The destination cannot be read", errno);
    }
    while (const dirent64* const entry = ::readdir64(stream)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            names.emplace_back(name);
        }
    }
    ::closedir(stream);
    return names;
}

bool stands(int folder, const std::string& name, struct stat& status)
{
    return ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

/// Names may hold line breaks, so each is ended by a zero byte: "<inode> <name>".
std::string listText(const std::map<std::string, std::uint64_t>& list)
{
    std::string text;
    for (const auto& [name, inode] : list) {
        text += std::to_string(inode) + " " + name + '\0';
    }
    return text;
}

std::map<std::string, std::uint64_t> readList(const fs::path& file)
{
    std::map<std::string, std::uint64_t> list;
    const std::string text = readSmallFile(file, kListLimit).value_or(std::string());
    for (std::size_t begin = 0, end = 0; (end = text.find('\0', begin)) != std::string::npos; begin = end + 1)
    {
        std::uint64_t inode = 0;
        const char* const last = text.data() + end;
        const auto [rest, error] = std::from_chars(text.data() + begin, last, inode);
        if (error == std::errc() && rest != last) {
            list.emplace(std::string(rest + 1, last), inode);
        }
    }
    return list;
}

void writeSynced(int folder, const char* name, const std::string& text, const std::string& shown)
{
    const FileDescriptor file(
        ::openat(folder, name, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0644));
    std::string_view left = text;
    while (file && !left.empty()) {
        const ssize_t count = ::write(file.get(), left.data(), left.size());
        if (count <= 0) {
            break;
        }
        left.remove_prefix(static_cast<std::size_t>(count));
    }
    if (!file || !left.empty() || ::fsync(file.get()) != 0) {
        throw systemFailure(shown + " cannot be written", errno);
    }
}

/// Moves an entry between two folders of one disk, never onto another one; false with errno set.
bool move(int from, const std::string& name, int to)
{
    struct stat status{};
    if (!stands(from, name, status)) {
        return false;
    }
    // A folder that its owner may not write cannot be moved: its ".." changes.
    const bool unlock = S_ISDIR(status.st_mode) && (status.st_mode & 0200) == 0;
    const FileDescriptor folder(unlock ? ::openat(from, name.c_str(), kOpenFolder) : -1);
    if (folder) {
        ::fchmod(folder.get(), (status.st_mode & 07777) | 0200);
    }
    int result = ::renameat2(from, name.c_str(), to, name.c_str(), RENAME_NOREPLACE);
    if (result != 0 && (errno == EINVAL || errno == ENOSYS)) {
        // Some network file systems cannot; a look before is the next best.
        struct stat there{};
        errno = EEXIST;
        result = stands(to, name, there) ? -1 : ::renameat(from, name.c_str(), to, name.c_str());
    }
    const int error = errno;
    if (folder) {
        ::fchmod(folder.get(), status.st_mode & 07777);
    }
    errno = error;
    return result == 0;
}

bool isAfter(const statx_timestamp& time, const struct stat& list)
{
    return time.tv_sec > list.st_ctim.tv_sec ||
           (time.tv_sec == list.st_ctim.tv_sec && static_cast<long>(time.tv_nsec) > list.st_ctim.tv_nsec);
}

/// Finds what was changed after the list was written. Moving up changes the change time of what moves itself,
/// and of nothing inside it.
class ChangeFinder : public TreeVisitor {
public:
    ChangeFinder(const struct stat& list, std::string name) : _list(list), _path{std::move(name)} {}

    bool enterFolder(const WalkedFolder& folder) override
    {
        if (folder.name[0] != '\0') {
            _path.push_back(_path.back() + "/" + folder.name);
            look(*folder.status, _path.back());
        } else {
            _path.push_back(_path.back());
        }
        return true;
    }

    void leaveFolder() override { _path.pop_back(); }

    void visit(const WalkedEntry& entry) override { look(*entry.status, _path.back() + "/" + entry.name); }

    std::optional<std::string> found;

private:
    void look(const struct statx& status, const std::string& path)
    {
        // Another name of the same file may be among what moved.
        const bool moved = !S_ISDIR(status.stx_mode) && status.stx_nlink > 1;
        if (!found && ((!moved && isAfter(status.stx_ctime, _list)) || isAfter(status.stx_mtime, _list))) {
            found = path;
        }
    }

    const struct stat& _list;
    std::vector<std::string> _path;
};

} // namespace

EarlierExport EarlierExport::lookIn(const fs::path& destination, const std::string& driveUuid)
{
    const FileDescriptor folder(::open(destination.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
        throw systemFailure(displayName(destination.string()) + " cannot be read", errno);
    }
    EarlierExport earlier;
    std::size_t others = 0;
    bool marked = false;
    for (const std::string& name : namesIn(folder.get())) {
        marked = marked || name == kIncompleteMark;
        others += isTrial(name) || name == kIncompleteMark ? 0 : 1;
    }
    const fs::path mark = destination / kIncompleteMark;
    struct stat status{};
    if (!marked || ::lstat(mark.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        earlier.found = others == 0 && !marked ? Found::Nothing : Found::Foreign;
        return earlier;
    }
    const std::string text = readSmallFile(mark / kDriveFile).value_or(std::string());
    if (text == driveText(driveUuid)) {
        earlier.found = Found::Begun;
        earlier.published = readList(mark / kPublishedList);
    } else {
        // A power cut may come before the mark says whose it is; nothing was copied by then.
        std::error_code error;
        earlier.found = others == 0 && text.empty() && !fs::exists(mark / kFilesFolder, error)
                            ? Found::Nothing
                            : Found::Foreign;
    }
    return earlier;
}

std::optional<std::string> EarlierExport::conflictWith(const fs::path& drive,
                                                       const fs::path& destination) const
{
    const FileDescriptor folder(::open(destination.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const FileDescriptor root(::open(drive.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder || !root) {
        return std::nullopt;
    }
    for (const std::string& name : namesIn(folder.get())) {
        struct stat here{};
        struct stat there{};
        if (name == kIncompleteMark || name == kToolFolder || isTrial(name) ||
            !stands(root.get(), name, there) || !stands(folder.get(), name, here))
        {
            continue;
        }
        const auto ours = published.find(name);
        if (ours == published.end() || ours->second != here.st_ino) {
            return name;
        }
    }
    return std::nullopt;
}

std::optional<std::string> EarlierExport::changedSince(const fs::path& destination) const
{
    struct stat list{};
    const FileDescriptor folder(::open(destination.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (published.empty() || !folder ||
        ::lstat((destination / kIncompleteMark / kPublishedList).c_str(), &list) != 0)
    {
        return std::nullopt;
    }
    for (const auto& [name, inode] : published) {
        struct stat status{};
        if (!stands(folder.get(), name, status) || status.st_ino != inode) {
            continue;
        }
        const bool later =
            status.st_mtim.tv_sec > list.st_ctim.tv_sec ||
            (status.st_mtim.tv_sec == list.st_ctim.tv_sec && status.st_mtim.tv_nsec > list.st_ctim.tv_nsec);
        if (later) {
            return name;
        }
        if (S_ISDIR(status.st_mode)) {
            ChangeFinder finder(list, name);
            FileDescriptor inside(::openat(folder.get(), name.c_str(), kOpenFolder));
            if (!inside) {
                continue;
            }
            walkTree(std::move(inside), finder, {}, ToolFolder::Visit);
            if (finder.found) {
                return finder.found;
            }
        }
    }
    return std::nullopt;
}

Staging::Staging(const fs::path& destination, std::string shown, const std::string& driveUuid)
    : _shown(std::move(shown))
{
    if (::mkdir(destination.c_str(), 0777) != 0 && errno != EEXIST) {
        throw systemFailure(_shown + " cannot be written", errno);
    }
    _destination = FileDescriptor(::open(destination.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!_destination || (::mkdirat(_destination.get(), kIncompleteMark, 0700) != 0 && errno != EEXIST)) {
        throw systemFailure(_shown + " cannot be written", errno);
    }
    for (const std::string& name : namesIn(_destination.get())) {
        if (isTrial(name)) {
            removeEntry(_destination.get(), name.c_str());
        }
    }
    _mark = FileDescriptor(::openat(_destination.get(), kIncompleteMark, kOpenFolder));
    if (!_mark) {
        throw systemFailure(_shown + " cannot be written", errno);
    }
    // Before anything is copied: what has no owner's name on it is nobody's to go on with.
    writeSynced(_mark.get(), kDriveFile, driveText(driveUuid), _shown);
    if (::mkdirat(_mark.get(), kFilesFolder, 0700) != 0 && errno != EEXIST) {
        throw systemFailure(_shown + " cannot be written", errno);
    }
    _files = FileDescriptor(::openat(_mark.get(), kFilesFolder, kOpenFolder));
    if (!_files || ::fsync(_mark.get()) != 0 || ::fsync(_destination.get()) != 0) {
        throw systemFailure(_shown + " cannot be written", errno);
    }
    takeBack();
}

void Staging::takeBack()
{
    const std::string mark = "/proc/self/fd/" + std::to_string(_mark.get());
    for (const auto& [name, inode] : readList(fs::path(mark) / kPublishedList)) {
        struct stat status{};
        if (!stands(_destination.get(), name, status) || status.st_ino != inode) {
            continue;
        }
        if (!move(_destination.get(), name, _files.get())) {
            throw systemFailure("“" + displayName(name) + "” in " + _shown + " cannot be moved", errno);
        }
    }
    ::unlinkat(_mark.get(), kPublishedList, 0);
    ::unlinkat(_mark.get(), kNewList, 0);
}

void Staging::sync() const
{
    if (::syncfs(_destination.get()) != 0) {
        throw systemFailure(_shown + " cannot be written", errno);
    }
}

void Staging::publish()
{
    std::map<std::string, std::uint64_t> list;
    for (const std::string& name : namesIn(_files.get())) {
        struct stat status{};
        if (!stands(_files.get(), name, status)) {
            throw systemFailure(_shown + " cannot be read", errno);
        }
        list.emplace(name, status.st_ino);
    }
    writeSynced(_mark.get(), kNewList, listText(list), _shown);
    if (::renameat(_mark.get(), kNewList, _mark.get(), kPublishedList) != 0 || ::fsync(_mark.get()) != 0) {
        throw systemFailure(_shown + " cannot be written", errno);
    }
    for (const auto& [name, inode] : list) {
        if (!move(_files.get(), name, _destination.get())) {
            if (errno == EEXIST) {
                throw Failure("“" + displayName(name) + "” in " + _shown +
                                  " is not from the drive. Move it away, then export again.",
                              "in-the-way");
            }
            throw systemFailure(_shown + " cannot be written", errno);
        }
    }
    sync();
}

void Staging::finish()
{
    // In one step, so that a kill leaves either an export to go on with or a finished one.
    const std::string done = kTrialStem + std::string("finished-") + std::to_string(::getpid());
    if (::renameat(_destination.get(), kIncompleteMark, _destination.get(), done.c_str()) != 0) {
        throw systemFailure(_shown + " cannot be written", errno);
    }
    removeEntry(_destination.get(), done.c_str());
    sync();
}

void finishEarlierExport(const fs::path& destination)
{
    const FileDescriptor folder(::open(destination.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const FileDescriptor mark(folder ? ::openat(folder.get(), kIncompleteMark, kOpenFolder) : -1);
    struct stat list{};
    const FileDescriptor files(mark ? ::openat(mark.get(), kFilesFolder, kOpenFolder) : -1);
    if (files && ::fstatat(mark.get(), kPublishedList, &list, AT_SYMLINK_NOFOLLOW) == 0 &&
        namesIn(files.get()).empty())
    {
        removeEntry(folder.get(), kIncompleteMark);
    }
}

} // namespace ferrobank::drive
