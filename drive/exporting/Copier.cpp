#include "exporting/Copier.h"

#include "exporting/OwnFiles.h"
#include "exporting/Removal.h"
#include "exporting/Snapshot.h"
#include "figures/DisplayText.h"
#include "platform/Failure.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <system_error>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kStepBytes = std::size_t{1} << 20U;
constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr int kReadFile = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

/// Errors that concern the whole destination and not one name on it.
bool endsTheCopy(int error)
{
    return error == ENOSPC || error == EDQUOT || error == EROFS || error == EIO || error == ENODEV ||
           error == EFBIG;
}

} // namespace

Copier::Copier(Target target, Notes notes, std::stop_token stop)
    : _target(std::move(target)),
      _record(notes.record),
      _differences(notes.differences),
      _leftOut(notes.leftOut),
      _progress(notes.progress),
      _stop(std::move(stop)),
      _buffer(kStepBytes)
{}

void Copier::beginPart(const std::string& place)
{
    _place = place;
    _levels.clear();
}

std::string Copier::pathOf(const char* name) const
{
    const std::string& folder = _levels.back().path;
    return folder.empty() ? name : folder + "/" + name;
}

void Copier::failWriting(int error) const
{
    if (error == ENOSPC || error == EDQUOT) {
        throw Failure(
            _target.shown +
                " is full. Free some space there and export again; the copy goes on where it ended.",
            "full");
    }
    throw systemFailure(_target.shown + " cannot be written", error);
}

FileDescriptor Copier::makeFolder(const char* name, const std::string& path)
{
    const int parent = _levels.back().target.get();
    int result = ::mkdirat(parent, name, 0700);
    if (result != 0 && errno == EEXIST && _target.start == ExportStart::Continue) {
        struct stat there{};
        if (::fstatat(parent, name, &there, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(there.st_mode)) {
            // It may have got permissions of the original already that forbid writing into it.
            result = (there.st_mode & 0700) == 0700 ? 0 : ::fchmodat(parent, name, 0700, 0);
        } else {
            removeEntry(parent, name);
            result = ::mkdirat(parent, name, 0700);
        }
    }
    if (result != 0) {
        if (endsTheCopy(errno)) {
            failWriting(errno);
        }
        _differences.add(path, "could not be made", errno);
        return {};
    }
    FileDescriptor made(::openat(parent, name, kOpenFolder));
    if (!made) {
        _differences.add(path, "could not be made", errno);
    }
    return made;
}

bool Copier::enterFolder(const WalkedFolder& folder)
{
    Level level;
    level.status = *folder.status;
    level.source = FileDescriptor(::fcntl(folder.descriptor, F_DUPFD_CLOEXEC, 0));
    if (_levels.empty()) {
        level.path = _place;
        std::string name;
        const FileDescriptor parent = openParent(_target.folder, _place, name);
        level.target = FileDescriptor(
            parent ? ::openat(parent.get(), name.empty() ? "." : name.c_str(), kOpenFolder) : -1);
    } else {
        level.path = pathOf(folder.name);
        level.target = makeFolder(folder.name, level.path);
    }
    if (!level.target || !level.source) {
        if (_levels.empty()) {
            _differences.add(_place, "could not be copied", errno);
        }
        return false;
    }
    // The root of a subvolume was counted where it is an empty folder in its parent's snapshot.
    if (!_levels.empty()) {
        ++_record.entries;
    }
    _levels.push_back(std::move(level));
    return true;
}

void Copier::leaveFolder()
{
    const Level level = std::move(_levels.back());
    _levels.pop_back();
    if (_target.start == ExportStart::Continue && !_stop.stop_requested()) {
        dropOthers(level);
    }
    // The folder of the whole copy is not the drive's; a subvolume's place gets its attributes with the
    // subvolume.
    if (!level.path.empty() && !standsForVolume(level.status)) {
        copyAttributes(level.source.get(), level.status, level.target.get(), level.path, _differences,
                       _target.start == ExportStart::Continue ? Existing::Replace : Existing::None);
        noteFlags(level.source.get(), level.path);
    }
}

void Copier::dropOthers(const Level& level)
{
    const int opened = ::openat(level.target.get(), ".", kOpenFolder);
    DIR* const stream = opened < 0 ? nullptr : ::fdopendir(opened);
    if (stream == nullptr) {
        _differences.add(level.path, "could not be read in the copy", errno);
        return;
    }
    while (const dirent64* const entry = ::readdir64(stream)) {
        struct stat original{};
        const bool gone = ::fstatat(level.source.get(), entry->d_name, &original, AT_SYMLINK_NOFOLLOW) != 0 &&
                          errno == ENOENT;
        if (gone && !removeEntry(opened, entry->d_name)) {
            _differences.add(level.path.empty() ? entry->d_name : level.path + "/" + entry->d_name,
                             "is no longer on the drive but could not be removed from the copy", errno);
        }
    }
    ::closedir(stream);
}

void Copier::noteFlags(int source, const std::string& path)
{
    if (const std::string flags = droppedFlags(source); !flags.empty()) {
        _leftOut.add("“" + displayName(path) + "” is copied without its flags " + flags + ".");
    }
}

void Copier::unreadable(const char* name, int error)
{
    _differences.add(*name == '\0' ? _levels.back().path : pathOf(name), "could not be read", error);
}

void Copier::visit(const WalkedEntry& entry)
{
    const bool inRoot = _levels.back().path.empty();
    if (_stop.stop_requested() || (inRoot && isOwnIcon(entry))) {
        return;
    }
    const std::string path = pathOf(entry.name);
    const struct statx& status = *entry.status;
    if (S_ISSOCK(status.stx_mode)) {
        // Without the program that listens it means nothing.
        skip(entry, path, "is a socket");
        return;
    }
    ++_record.entries;
    if (_known != nullptr && _known->isUnchanged(path, status)) {
        _record.files += S_ISREG(status.stx_mode) ? 1 : 0;
        _record.bytes += S_ISREG(status.stx_mode) ? status.stx_size : 0;
        return;
    }
    if (S_ISREG(status.stx_mode)) {
        copyFile(entry, path);
    } else if (S_ISLNK(status.stx_mode)) {
        copySymbolicLink(entry, path);
    } else {
        copySpecial(entry, path);
    }
    if (_noted != nullptr && !_record.skipped.contains(path)) {
        _noted->note(path, status);
    }
}

void Copier::skip(const WalkedEntry& entry, const std::string& path, const char* why)
{
    clearPlace(entry.name);
    _record.skipped.insert(path);
    _leftOut.add("“" + displayName(path) + "” " + why + " and not in the copy.");
}

void Copier::clearPlace(const char* name)
{
    // Only where this very export was at work before; a fresh one begins empty.
    if (_target.start == ExportStart::Continue) {
        removeEntry(_levels.back().target.get(), name);
    }
}

/// The name that the others are linked to: one that is in the copy already and passed over, else this one.
std::string Copier::firstName(const WalkedEntry& entry, const std::string& path) const
{
    const std::vector<std::string>* const names =
        _known == nullptr || !_place.empty() ? nullptr : _known->linkedNames(entry.status->stx_ino);
    for (std::size_t index = 0; names != nullptr && index < names->size(); ++index) {
        std::string name;
        const FileDescriptor folder = openParent(_levels.front().source.get(), (*names)[index], name);
        struct statx there{};
        if (folder &&
            ::statx(folder.get(), name.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &there) == 0 &&
            there.stx_dev_major == entry.status->stx_dev_major &&
            there.stx_dev_minor == entry.status->stx_dev_minor && _known->isUnchanged((*names)[index], there))
        {
            return (*names)[index];
        }
    }
    return path;
}

bool Copier::linkToCopy(const WalkedEntry& entry, const std::string& path)
{
    if (entry.status->stx_nlink < 2) {
        return false;
    }
    const std::uint64_t identity = fileIdentity(entry.folder->volume, entry.status->stx_ino);
    auto known = _linked.find(identity);
    if (known == _linked.end()) {
        known = _linked.emplace(identity, firstName(entry, path)).first;
        if (known->second == path) {
            return false;
        }
    }
    clearPlace(entry.name);
    std::string name;
    const FileDescriptor folder = openParent(_target.folder, known->second, name);
    if (!folder || ::linkat(folder.get(), name.c_str(), _levels.back().target.get(), entry.name, 0) != 0) {
        if (endsTheCopy(errno)) {
            failWriting(errno);
        }
        _differences.add(path, "could not be linked", errno);
    }
    return true;
}

void Copier::copyFile(const WalkedEntry& entry, const std::string& path)
{
    if (linkToCopy(entry, path)) {
        return;
    }
    const FileDescriptor source(::openat(entry.folder->descriptor, entry.name, kReadFile));
    if (!source) {
        _differences.add(path, "could not be read", errno);
        return;
    }
    if (!keepsEarlierCopy(source.get(), entry)) {
        clearPlace(entry.name);
        copyContent(source.get(), entry, path);
    }
    noteFlags(source.get(), path);
    ++_record.files;
}

bool Copier::keepsEarlierCopy(int source, const WalkedEntry& entry)
{
    if (_target.start == ExportStart::Fresh) {
        return false;
    }
    const struct statx& status = *entry.status;
    const FileDescriptor earlier(::openat(_levels.back().target.get(), entry.name, kReadFile));
    struct stat made{};
    if (!earlier || ::fstat(earlier.get(), &made) != 0 || !S_ISREG(made.st_mode) ||
        made.st_size != static_cast<off_t>(status.stx_size) ||
        made.st_mtim.tv_sec != status.stx_mtime.tv_sec || made.st_nlink != 1)
    {
        return false;
    }
    // A time proves nothing after a power cut: only the content counts.
    const auto goOn = [this](std::uint64_t, std::span<const char>) { return !_stop.stop_requested(); };
    const HashOutcome copied = hashContent(earlier.get(), status.stx_size, _buffer, goOn);
    const HashOutcome original = hashContent(source, status.stx_size, _buffer, goOn);
    if (!copied.hash || copied.hash != original.hash) {
        return false;
    }
    _record.contents[fileIdentity(entry.folder->volume, status.stx_ino)] = *original.hash;
    _record.bytes += status.stx_size;
    _progress.add(status.stx_blocks * 512);
    // Whoever may not write a file may not give it attributes either.
    if (::fchmod(earlier.get(), 0600) != 0) {
        return false;
    }
    copyAttributes(source, status, earlier.get(), pathOf(entry.name), _differences, Existing::Replace);
    return true;
}

void Copier::write(int file, std::uint64_t offset, std::span<const char> bytes) const
{
    while (!bytes.empty()) {
        const ssize_t count = ::pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            failWriting(count < 0 ? errno : EIO);
        }
        offset += static_cast<std::uint64_t>(count);
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
}

void Copier::copyContent(int source, const WalkedEntry& entry, const std::string& path)
{
    const struct statx& status = *entry.status;
    const int folder = _levels.back().target.get();
    const FileDescriptor copy(
        ::openat(folder, entry.name, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!copy) {
        if (endsTheCopy(errno)) {
            failWriting(errno);
        }
        _differences.add(path, "could not be made", errno);
        return;
    }
    const HashOutcome outcome =
        hashContent(source, status.stx_size, _buffer, [&](std::uint64_t offset, std::span<const char> bytes) {
            write(copy.get(), offset, bytes);
            _progress.add(bytes.size());
            return !_stop.stop_requested();
        });
    if (!outcome.hash) {
        // Half a file must not pass for a whole one.
        ::unlinkat(folder, entry.name, 0);
        _linked.erase(fileIdentity(entry.folder->volume, status.stx_ino));
        if (!_stop.stop_requested()) {
            _differences.add(path, "could not be read", outcome.error == 0 ? EIO : outcome.error);
        }
        return;
    }
    // A hole at the end is not written.
    if (::ftruncate(copy.get(), static_cast<off_t>(status.stx_size)) != 0) {
        failWriting(errno);
    }
    copyAttributes(source, status, copy.get(), path, _differences, Existing::None);
    ++_record.copied;
    _record.contents[fileIdentity(entry.folder->volume, status.stx_ino)] = *outcome.hash;
    _record.bytes += status.stx_size;
}

void Copier::copySymbolicLink(const WalkedEntry& entry, const std::string& path)
{
    std::array<char, PATH_MAX + 1> target{};
    if (::readlinkat(entry.folder->descriptor, entry.name, target.data(), PATH_MAX) < 0) {
        _differences.add(path, "could not be read", errno);
        return;
    }
    clearPlace(entry.name);
    const int folder = _levels.back().target.get();
    if (::symlinkat(target.data(), folder, entry.name) != 0) {
        if (endsTheCopy(errno)) {
            failWriting(errno);
        }
        _differences.add(path, "could not be made", errno);
        return;
    }
    copyEntryAttributes(*entry.status, folder, entry.name, path, _differences);
}

void Copier::copySpecial(const WalkedEntry& entry, const std::string& path)
{
    const struct statx& status = *entry.status;
    clearPlace(entry.name);
    const int folder = _levels.back().target.get();
    if (::mknodat(folder, entry.name, status.stx_mode,
                  ::makedev(status.stx_rdev_major, status.stx_rdev_minor)) != 0)
    {
        if (endsTheCopy(errno)) {
            failWriting(errno);
        }
        // A device, or a pipe where the destination has none: there is nothing in it to lose.
        --_record.entries;
        skip(entry, path, "is no ordinary file");
        return;
    }
    copyEntryAttributes(status, folder, entry.name, path, _differences);
}

} // namespace ferrobank::drive
