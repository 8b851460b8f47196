#include "helper/FstabFile.h"

#include "helper/PatientLock.h"
#include "platform/Failure.h"
#include "platform/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <vector>

namespace ferrobank::drive {

namespace {

constexpr int kAttempts = 5;
constexpr const char* kTemporary = ".fstab.ferrobank-";

Failure refused(const std::filesystem::path& fstab, int error)
{
    return systemFailure("Cannot change " + fstab.string(), error);
}

std::string readAll(int file, const std::filesystem::path& fstab)
{
    std::string text;
    char piece[16 * 1024];
    for (;;) {
        const ssize_t got = ::pread(file, piece, sizeof piece, static_cast<off_t>(text.size()));
        if (got < 0 && errno != EINTR) {
            throw systemFailure("Cannot read " + fstab.string(), errno);
        }
        if (got == 0) {
            return text;
        }
        text.append(piece, static_cast<std::size_t>(got > 0 ? got : 0));
    }
}

bool writeAll(int file, const std::string& text)
{
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t put = ::write(file, text.data() + done, text.size() - done);
        if (put < 0 && errno != EINTR) {
            return false;
        }
        done += static_cast<std::size_t>(put > 0 ? put : 0);
    }
    return true;
}

/// Owner, mode, access list and whatever else the system keeps with the file (xattr(7)).
bool copyAttributes(int from, int to)
{
    struct stat facts{};
    if (::fstat(from, &facts) != 0 || ::fchown(to, facts.st_uid, facts.st_gid) != 0) {
        return false;
    }
    // The first answer is a limit: a layered file system also counts names that it does not tell.
    const ssize_t limit = ::flistxattr(from, nullptr, 0);
    std::vector<char> names(static_cast<std::size_t>(limit > 0 ? limit : 0));
    const ssize_t length = names.empty() ? limit : ::flistxattr(from, names.data(), names.size());
    if (length < 0 && errno != ENOTSUP) {
        return false;
    }
    names.resize(static_cast<std::size_t>(length > 0 ? length : 0));
    for (std::size_t at = 0; at < names.size();) {
        const std::string name = &names[at];
        at += name.size() + 1;
        const ssize_t size = ::fgetxattr(from, name.c_str(), nullptr, 0);
        std::vector<char> value(static_cast<std::size_t>(size > 0 ? size : 0));
        if (size < 0 || ::fgetxattr(from, name.c_str(), value.data(), value.size()) != size ||
            ::fsetxattr(to, name.c_str(), value.data(), value.size(), 0) != 0)
        {
            return false;
        }
    }
    return ::fchmod(to, facts.st_mode & 07777) == 0;
}

/// A file beside fstab that goes with this value.
class Beside {
public:
    explicit Beside(const std::filesystem::path& fstab)
        : _path((fstab.parent_path() / (kTemporary + std::string("XXXXXX"))).string()),
          _file(::mkostemp(_path.data(), O_CLOEXEC))
    {}

    Beside(const Beside&) = delete;
    Beside& operator=(const Beside&) = delete;

    ~Beside()
    {
        if (_file) {
            ::unlink(_path.c_str());
        }
    }

    [[nodiscard]] const std::string& path() const { return _path; }

    [[nodiscard]] int file() const { return _file.get(); }

private:
    std::string _path;
    FileDescriptor _file;
};

FileDescriptor openPlain(const std::filesystem::path& fstab)
{
    FileDescriptor file(::open(fstab.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat facts{};
    if (file && (::fstat(file.get(), &facts) != 0 || !S_ISREG(facts.st_mode))) {
        file.reset();
        errno = EINVAL;
    }
    if (!file && errno != ENOENT) {
        throw Failure(fstab.string() + " cannot be read or is no plain file.", "fstab");
    }
    return file;
}

bool isSameFile(int one, int other)
{
    struct stat first{};
    struct stat second{};
    return ::fstat(one, &first) == 0 && ::fstat(other, &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

void syncFolder(const std::filesystem::path& folder)
{
    const FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ::fsync(opened.get());
}

} // namespace

std::string FstabFile::read() const
{
    const FileDescriptor file = openPlain(_places.fstab);
    return file ? readAll(file.get(), _places.fstab) : std::string();
}

void FstabFile::removeLeftOvers() const
{
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(_places.fstab.parent_path(), error)) {
        if (entry.path().filename().string().starts_with(kTemporary)) {
            ::unlink(entry.path().c_str());
        }
    }
}

FstabFile::Outcome FstabFile::editOnce(const Change& change) const
{
    const FileDescriptor old = openPlain(_places.fstab);
    const std::string text = old ? readAll(old.get(), _places.fstab) : std::string();
    const std::string changed = change(text);
    if (!old || changed == text) {
        return Outcome::Done;
    }
    const Beside fresh(_places.fstab);
    if (fresh.file() < 0 || !writeAll(fresh.file(), changed) || !copyAttributes(old.get(), fresh.file()) ||
        ::fsync(fresh.file()) != 0)
    {
        throw refused(_places.fstab, errno);
    }
    const auto exchange = [&] {
        return ::renameat2(AT_FDCWD, fresh.path().c_str(), AT_FDCWD, _places.fstab.c_str(),
                           RENAME_EXCHANGE) == 0;
    };
    const auto isStillThere = [&](const std::filesystem::path& path) {
        const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        return file && isSameFile(file.get(), old.get()) && readAll(file.get(), _places.fstab) == text;
    };
    // The two change places, so that what was there can still be looked at and be put back.
    if (!exchange()) {
        const bool cannotExchange = errno == EINVAL || errno == ENOSYS;
        if (!cannotExchange || !isStillThere(_places.fstab) ||
            ::rename(fresh.path().c_str(), _places.fstab.c_str()) != 0)
        {
            throw refused(_places.fstab, errno);
        }
        syncFolder(_places.fstab.parent_path());
        return Outcome::Done;
    }
    if (isStillThere(fresh.path())) {
        syncFolder(_places.fstab.parent_path());
        return Outcome::Done;
    }
    if (!exchange()) {
        throw refused(_places.fstab, errno);
    }
    return Outcome::ChangedMeanwhile;
}

void FstabFile::edit(const Change& change) const
{
    const FileLock lock = takePatiently(_places.fstabLock());
    removeLeftOvers();
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (editOnce(change) == Outcome::Done) {
            return;
        }
    }
    throw Failure("Another program keeps changing " + _places.fstab.string() + ".", "fstab");
}

} // namespace ferrobank::drive
