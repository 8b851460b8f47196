#include "mounting/HomeEntry.h"

#include "mounting/MountHelper.h"
#include "platform/Failure.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace ferrobank::drive {

HomeEntry::HomeEntry(std::filesystem::path path, std::string user)
    : _path(std::move(path)), _user(std::move(user))
{}

bool HomeEntry::leadsToAMount(const std::string& target) const
{
    if (target == helperMountPoint(::geteuid())) {
        return true;
    }
    for (const char* root : {"/media/", "/run/media/"}) {
        const std::string prefix = root + _user + "/Ferrobank";
        // udisks2 appends a number when the name is taken.
        if (target.starts_with(prefix) &&
            target.find_first_not_of("0123456789", prefix.size()) == std::string::npos)
        {
            return true;
        }
    }
    return false;
}

HomeEntry::Kind HomeEntry::kind() const
{
    struct stat status{};
    if (::lstat(_path.c_str(), &status) != 0) {
        if (errno != ENOENT) {
            throw systemFailure("Cannot look at " + _path.string(), errno);
        }
        return Kind::Absent;
    }
    std::error_code error;
    if (S_ISLNK(status.st_mode)) {
        const std::filesystem::path target = std::filesystem::read_symlink(_path, error);
        return !error && leadsToAMount(target.string()) ? Kind::OwnLink : Kind::Foreign;
    }
    if (S_ISDIR(status.st_mode) && std::filesystem::is_empty(_path, error) && !error) {
        return Kind::EmptyFolder;
    }
    return Kind::Foreign;
}

void HomeEntry::requireFree() const
{
    if (kind() == Kind::Foreign) {
        throw Failure(
            "~/Ferrobank already exists and holds other files. Move it away, then restart Ferrobank.",
            "home-occupied");
    }
}

void HomeEntry::becomeMountPoint() const
{
    requireFree();
    if (kind() == Kind::OwnLink && ::unlink(_path.c_str()) != 0) {
        throw systemFailure("Cannot replace " + _path.string(), errno);
    }
    if (::mkdir(_path.c_str(), 0555) != 0 && errno != EEXIST) {
        throw systemFailure("Cannot make " + _path.string(), errno);
    }
    if (::chmod(_path.c_str(), 0555) != 0) {
        throw systemFailure("Cannot change " + _path.string(), errno);
    }
}

void HomeEntry::becomeLinkTo(const std::filesystem::path& target) const
{
    std::error_code error;
    if (std::filesystem::read_symlink(_path, error) == target && !error) {
        return;
    }
    requireFree();
    if (kind() == Kind::EmptyFolder && ::rmdir(_path.c_str()) != 0) {
        throw systemFailure("Cannot replace " + _path.string(), errno);
    }
    const std::filesystem::path fresh = _path.string() + ".new-link";
    ::unlink(fresh.c_str());
    if (::symlink(target.c_str(), fresh.c_str()) != 0 || ::rename(fresh.c_str(), _path.c_str()) != 0) {
        const int reason = errno;
        ::unlink(fresh.c_str());
        throw systemFailure("Cannot make the link " + _path.string(), reason);
    }
}

void HomeEntry::removeIfOwn() const
{
    switch (kind()) {
    case Kind::Absent:
    case Kind::Foreign:
        return;
    case Kind::OwnLink:
        ::unlink(_path.c_str());
        return;
    case Kind::EmptyFolder:
        // A folder that became non-empty meanwhile stays, by rmdir's own rule.
        ::rmdir(_path.c_str());
        return;
    }
}

std::string loginName()
{
    const passwd* entry = ::getpwuid(::geteuid());
    return entry != nullptr ? entry->pw_name : std::to_string(::geteuid());
}

} // namespace ferrobank::drive
