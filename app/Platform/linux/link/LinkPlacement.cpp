#include "Platform/LinkPlacement.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>

namespace ferrobank {

namespace {

namespace fs = std::filesystem;

/// How often a path that changes under our hands is looked at again.
constexpr int kAttempts = 16;

[[noreturn]] void fail(const fs::path& target, const fs::path& link)
{
    throw fs::filesystem_error("cannot make link", target, link,
                               std::error_code(errno, std::generic_category()));
}

enum class Found { Nothing, Link, Other };

Found lookAt(const fs::path& path)
{
    struct stat facts{};
    if (::lstat(path.c_str(), &facts) != 0) {
        return Found::Nothing; // or out of reach; making the link tells
    }
    return S_ISLNK(facts.st_mode) ? Found::Link : Found::Other;
}

/// A new link beside the final place, under a name that nobody has; removed unless released.
class SpareLink {
public:
    SpareLink(const fs::path& target, const fs::path& link)
    {
        for (int i = 0; i < kAttempts; ++i) {
            _path =
                link.parent_path() / (".ferrobank-" + std::to_string(::getpid()) + '-' + std::to_string(i));
            if (::symlink(target.c_str(), _path.c_str()) == 0) {
                return;
            }
            if (errno != EEXIST) {
                break;
            }
        }
        _path.clear();
        fail(target, link);
    }

    SpareLink(const SpareLink&) = delete;
    SpareLink& operator=(const SpareLink&) = delete;

    ~SpareLink()
    {
        if (!_path.empty()) {
            ::unlink(_path.c_str());
        }
    }

    [[nodiscard]] const fs::path& path() const { return _path; }

    void release() { _path.clear(); }

private:
    fs::path _path;
};

bool exchange(const fs::path& one, const fs::path& other)
{
    return ::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE) == 0;
}

enum class Replaced { Yes, Vanished };

/// Swaps the link for a new one and looks at what came out, so that a file which somebody put there meanwhile
/// can go back.
Replaced replace(const fs::path& target, const fs::path& link)
{
    SpareLink spare(target, link);
    if (exchange(spare.path(), link)) {
        if (lookAt(spare.path()) == Found::Link) {
            return Replaced::Yes;
        }
        const fs::path foreign = spare.path();
        spare.release();
        if (!exchange(foreign, link)) {
            fail(target, link);
        }
        ::unlink(foreign.c_str());
        throw NotALinkError();
    }
    if (errno == ENOENT) {
        return Replaced::Vanished;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        fail(target, link);
    }
    // A file system that cannot swap: the look and the rename are as close together as can be.
    if (lookAt(link) == Found::Other) {
        throw NotALinkError();
    }
    if (::rename(spare.path().c_str(), link.c_str()) != 0) {
        fail(target, link);
    }
    spare.release();
    return Replaced::Yes;
}

/// `allowed` are the bits of others that are no objection.
bool isRoots(const struct stat& facts, mode_t allowed)
{
    return facts.st_uid == 0 && !S_ISLNK(facts.st_mode) &&
           (facts.st_mode & (S_IWGRP | S_IWOTH) & ~allowed) == 0;
}

bool isStaff(gid_t number)
{
    const group* const entry = ::getgrgid(number);
    return entry != nullptr && std::strcmp(entry->gr_name, "staff") == 0;
}

bool isAdministratorsUpTo(const fs::path& real)
{
    struct stat facts{};
    return ::lstat(real.c_str(), &facts) == 0 && isRoots(facts, isStaff(facts.st_gid) ? S_IWGRP : 0) &&
           (real == real.root_path() || isAdministratorsUpTo(real.parent_path()));
}

} // namespace

bool isOnlyRootsToWrite(const fs::path& path)
{
    struct stat facts{};
    if (!path.is_absolute() || ::lstat(path.c_str(), &facts) != 0 || !isRoots(facts, 0)) {
        return false;
    }
    return path == path.root_path() || isOnlyRootsToWrite(path.parent_path());
}

bool isOnlyRootsToPlaceIn(const fs::path& folder)
{
    std::error_code error;
    // From the top, so that a name is only followed where nobody but root can have given it.
    fs::path reached;
    for (const fs::path& name : folder) {
        reached = fs::canonical(reached / name, error);
        if (error || !isAdministratorsUpTo(reached)) {
            return false;
        }
    }
    return folder.is_absolute();
}

std::optional<fs::path> storedLinkText(const fs::path& link)
{
    std::error_code error;
    fs::path text = fs::read_symlink(link, error);
    return error ? std::nullopt : std::optional(std::move(text));
}

void placeLink(const fs::path& target, const fs::path& link)
{
    for (int i = 0; i < kAttempts; ++i) {
        switch (lookAt(link)) {
        case Found::Other:
            throw NotALinkError();
        case Found::Link:
            if (replace(target, link) == Replaced::Yes) {
                return;
            }
            break;
        case Found::Nothing:
            if (::symlink(target.c_str(), link.c_str()) == 0) {
                return;
            }
            if (errno != EEXIST) {
                fail(target, link);
            }
            break;
        }
    }
    errno = EBUSY;
    fail(target, link);
}

} // namespace ferrobank
