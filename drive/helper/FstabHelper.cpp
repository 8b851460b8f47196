#include "helper/FstabHelper.h"

#include "helper/StoreOfUser.h"
#include "mounting/FstabLine.h"
#include "platform/Failure.h"
#include "platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace ferrobank::drive {

FstabHelper::FstabHelper(uid_t user, std::filesystem::path fstab) : _user(user), _fstab(std::move(fstab)) {}

uid_t FstabHelper::callingUser()
{
    const char* text = std::getenv("PKEXEC_UID");
    uid_t user = 0;
    const char* end = text != nullptr ? text + std::strlen(text) : nullptr;
    if (text == nullptr || std::from_chars(text, end, user).ptr != end || user == 0 || ::geteuid() != 0) {
        throw Failure("This is to be started by a user, as: pkexec ferrobank helper-fstab add", "not-pkexec");
    }
    return user;
}

std::string FstabHelper::read() const
{
    struct stat status{};
    if (::lstat(_fstab.c_str(), &status) != 0 && errno == ENOENT) {
        return {};
    }
    const std::optional<std::string> text = readSmallFile(_fstab);
    if (!S_ISREG(status.st_mode) || !text) {
        throw Failure(_fstab.string() + " cannot be read or is no plain file.", "fstab");
    }
    return *text;
}

void FstabHelper::write(const std::string& text) const
{
    struct stat status{};
    const bool there = ::stat(_fstab.c_str(), &status) == 0;
    const std::filesystem::path fresh = _fstab.string() + ".ferrobank-new";
    removeIfPresent(fresh);
    replaceFile(fresh, text, Durability::Synced);
    const mode_t mode = there ? status.st_mode & 07777 : 0644;
    if (::chmod(fresh.c_str(), mode) != 0 || ::rename(fresh.c_str(), _fstab.c_str()) != 0) {
        const int error = errno;
        ::unlink(fresh.c_str());
        throw systemFailure("Cannot write " + _fstab.string(), error);
    }
}

void FstabHelper::add() const
{
    const StoreOfUser store = StoreOfUser::open(_user);
    prepareStore(store);
    const std::string text = read();
    const std::string changed = withFstabLine(text, _user, fstabLine(store.paths));
    if (changed != text) {
        write(changed);
    }
}

void FstabHelper::remove() const
{
    const std::string text = read();
    const std::string changed = withoutFstabLine(text, _user);
    if (changed != text) {
        write(changed);
    }
}

} // namespace ferrobank::drive
