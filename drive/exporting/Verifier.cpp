#include "exporting/Verifier.h"

#include "exporting/OwnFiles.h"
#include "exporting/Removal.h"
#include "exporting/Snapshot.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <string_view>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kStepBytes = std::size_t{1} << 20U;
constexpr std::size_t kFilesAhead = 32;
constexpr mode_t kModeBits = 07777;

std::string linkTarget(int folder, const char* name)
{
    std::array<char, PATH_MAX> target{};
    const ssize_t length = ::readlinkat(folder, name, target.data(), target.size());
    return {target.data(), length > 0 ? static_cast<std::size_t>(length) : 0};
}

} // namespace

Verifier::Verifier(int destination, const CopyRecord& record, Differences& differences,
                   ProgressMeter& progress, std::stop_token stop)
    : _destination(destination),
      _record(record),
      _differences(differences),
      _progress(progress),
      _stop(std::move(stop)),
      _buffer(kStepBytes)
{}

void Verifier::beginPart(const std::string& place)
{
    _place = place;
    _levels.clear();
}

std::string Verifier::pathOf(const char* name) const
{
    const std::string& folder = _levels.back().path;
    return folder.empty() ? name : folder + "/" + name;
}

bool Verifier::enterFolder(const WalkedFolder& folder)
{
    const bool root = _levels.empty();
    Level level;
    level.path = root ? _place : pathOf(folder.name);
    std::string name = folder.name;
    FileDescriptor above;
    if (root) {
        above = openParent(_destination, _place, name);
    }
    level.target = FileDescriptor(::openat(root ? above.get() : _levels.back().target.get(),
                                           name.empty() ? "." : name.c_str(),
                                           O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat copy{};
    if (!level.target || ::fstat(level.target.get(), &copy) != 0) {
        _differences.add(level.path, "is missing in the copy", errno);
        return false;
    }
    const bool compared = !level.path.empty() && !standsForVolume(*folder.status);
    if (compared && (copy.st_mode & kModeBits) != (folder.status->stx_mode & kModeBits)) {
        _differences.add(level.path, "has other permissions in the copy");
    }
    if (!root) {
        ++_entries;
    }
    _levels.push_back(std::move(level));
    return true;
}

void Verifier::leaveFolder()
{
    _levels.pop_back();
}

void Verifier::unreadable(const char* name, int error)
{
    _differences.add(*name == '\0' ? _levels.back().path : pathOf(name), "could not be read", error);
}

void Verifier::visit(const WalkedEntry& entry)
{
    const std::string path = pathOf(entry.name);
    const bool inRoot = _levels.back().path.empty();
    if (_stop.stop_requested() || (inRoot && isOwnIcon(entry)) || _record.skipped.contains(path)) {
        return;
    }
    struct stat copy{};
    if (::fstatat(_levels.back().target.get(), entry.name, &copy, AT_SYMLINK_NOFOLLOW) != 0) {
        _differences.add(path, "is missing in the copy", errno);
        return;
    }
    ++_entries;
    const mode_t mode = entry.status->stx_mode;
    if ((copy.st_mode & S_IFMT) != (mode & S_IFMT)) {
        _differences.add(path, "is of another kind in the copy");
    } else if (S_ISLNK(mode)) {
        compareLinkTarget(entry, path);
    } else if ((copy.st_mode & kModeBits) != (mode & kModeBits)) {
        _differences.add(path, "has other permissions in the copy");
    } else if (S_ISREG(mode)) {
        compareFile(entry, copy, path);
    }
}

void Verifier::compareLinkTarget(const WalkedEntry& entry, const std::string& path)
{
    const std::string original = linkTarget(entry.folder->descriptor, entry.name);
    if (original.empty() || original != linkTarget(_levels.back().target.get(), entry.name)) {
        _differences.add(path, "points elsewhere in the copy");
    }
}

bool Verifier::isKnownLink(std::uint64_t identity, const struct stat& copy, const std::string& path)
{
    const auto [known, first] = _linked.try_emplace(identity, CopiedFile{copy.st_dev, copy.st_ino});
    if (first) {
        return false;
    }
    if (known->second.device != copy.st_dev || known->second.inode != copy.st_ino) {
        _differences.add(path, "is no longer the same file as its other names in the copy");
    }
    return true;
}

void Verifier::compareFile(const WalkedEntry& entry, const struct stat& copy, const std::string& path)
{
    const std::uint64_t identity = fileIdentity(entry.folder->volume, entry.status->stx_ino);
    if (entry.status->stx_nlink > 1 && isKnownLink(identity, copy, path)) {
        return;
    }
    if (static_cast<std::uint64_t>(copy.st_size) != entry.status->stx_size) {
        _differences.add(path, "has another size in the copy");
        return;
    }
    if (_known != nullptr && _known->isUnchanged(path, *entry.status)) {
        return;
    }
    askForContent(entry, copy, path);
}

void Verifier::askForContent(const WalkedEntry& entry, const struct stat& copy, const std::string& path)
{
    const auto original = _record.contents.find(fileIdentity(entry.folder->volume, entry.status->stx_ino));
    if (original == _record.contents.end()) {
        _differences.add(path, "was not copied");
        return;
    }
    AwaitedFile awaited{.file = FileDescriptor(::openat(_levels.back().target.get(), entry.name,
                                                        O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)),
                        .size = static_cast<std::uint64_t>(copy.st_size),
                        .original = original->second,
                        .path = path};
    if (!awaited.file) {
        _differences.add(path, "cannot be read in the copy", errno);
        return;
    }
    // From the disk, not from what was written a moment ago and is still in memory.
    ::posix_fadvise(awaited.file.get(), 0, 0, POSIX_FADV_DONTNEED);
    ::posix_fadvise(awaited.file.get(), 0, kStepBytes, POSIX_FADV_WILLNEED);
    _awaited.push_back(std::move(awaited));
    if (_awaited.size() > kFilesAhead) {
        compareContent(_awaited.front());
        _awaited.pop_front();
    }
}

void Verifier::finish()
{
    for (; !_awaited.empty(); _awaited.pop_front()) {
        compareContent(_awaited.front());
    }
}

void Verifier::compareContent(const AwaitedFile& awaited)
{
    if (_stop.stop_requested()) {
        return;
    }
    const HashOutcome outcome = hashContent(awaited.file.get(), awaited.size, _buffer,
                                            [this](std::uint64_t, std::span<const char> bytes) {
                                                _progress.add(bytes.size());
                                                return !_stop.stop_requested();
                                            });
    if (_stop.stop_requested()) {
        return;
    }
    if (outcome.error != 0) {
        _differences.add(awaited.path, "cannot be read in the copy", outcome.error);
    } else if (outcome.hash != awaited.original) {
        _differences.add(awaited.path, "has another content in the copy");
    }
}

} // namespace ferrobank::drive
