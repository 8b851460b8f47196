#include "helper/Approvals.h"

#include "helper/RootsFolders.h"
#include "platform/Failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kLongestName = 512;

std::string textFor(const User& user)
{
    return user.name + "\n";
}

} // namespace

bool Approvals::has(const User& user) const
{
    const FileDescriptor folder = openRootsFolder(_places.approvals, _places.top);
    const FileDescriptor file(::openat(folder.get(), std::to_string(user.number).c_str(),
                                       O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat facts{};
    if (!file || ::fstat(file.get(), &facts) != 0 || !S_ISREG(facts.st_mode) || !isOnlyRootsToWrite(facts)) {
        return false;
    }
    char text[kLongestName];
    const ssize_t length = ::read(file.get(), text, sizeof text);
    return length > 0 && std::string(text, static_cast<std::size_t>(length)) == textFor(user);
}

void Approvals::add(const User& user) const
{
    const FileDescriptor folder = openRootsFolder(_places.approvals, _places.top);
    const std::string name = std::to_string(user.number);
    const std::string fresh = name + ".new";
    const std::string text = textFor(user);
    ::unlinkat(folder.get(), fresh.c_str(), 0);
    const FileDescriptor file(
        ::openat(folder.get(), fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
    const bool written = file &&
                         ::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
                         ::fsync(file.get()) == 0;
    if (!written || ::renameat(folder.get(), fresh.c_str(), folder.get(), name.c_str()) != 0) {
        throw systemFailure("Cannot write down the approval", errno);
    }
}

void Approvals::remove(uid_t user) const
{
    const FileDescriptor folder = openRootsFolder(_places.approvals, _places.top);
    if (::unlinkat(folder.get(), std::to_string(user).c_str(), 0) != 0 && errno != ENOENT) {
        throw systemFailure("Cannot remove the approval", errno);
    }
}

void Approvals::removeAll() const
{
    // Opened for the check that nobody else can change what is removed.
    static_cast<void>(openRootsFolder(_places.approvals, _places.top));
    std::error_code error;
    std::filesystem::remove_all(_places.approvals, error);
    if (error) {
        throw systemFailure("Cannot remove the approvals", error.value());
    }
}

} // namespace ferrobank::drive
