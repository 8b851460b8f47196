#include "helper/User.h"

#include "platform/Failure.h"

#include <grp.h>
#include <pwd.h>
#include <sys/fsuid.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace ferrobank::drive {

namespace {

User userOf(const passwd* entry)
{
    if (entry == nullptr || entry->pw_uid == 0 || entry->pw_name == nullptr || entry->pw_dir == nullptr ||
        entry->pw_dir[0] != '/')
    {
        throw Failure("There is no such user, or it has no home folder.", "no-user");
    }
    return {.number = entry->pw_uid, .group = entry->pw_gid, .name = entry->pw_name, .home = entry->pw_dir};
}

bool isRoot()
{
    return ::geteuid() == 0;
}

} // namespace

User User::numbered(uid_t number)
{
    return userOf(::getpwuid(number));
}

User User::named(const std::string& name)
{
    return userOf(::getpwnam(name.c_str()));
}

User User::calling()
{
    const char* text = std::getenv("PKEXEC_UID");
    uid_t number = 0;
    const char* end = text != nullptr ? text + std::strlen(text) : nullptr;
    if (text == nullptr || text == end || std::from_chars(text, end, number).ptr != end || number == 0) {
        throw Failure("This is to be started by a user through pkexec.", "not-pkexec");
    }
    return numbered(number);
}

UsersRights::UsersRights(const User& user)
{
    if (!isRoot()) {
        return;
    }
    // The groups first: without root's rights they cannot be set any more.
    const bool grouped = ::initgroups(user.name.c_str(), user.group) == 0;
    ::setfsgid(user.group);
    ::setfsuid(user.number);
    // These two report nothing but what was set before.
    if (!grouped || ::setfsgid(static_cast<gid_t>(-1)) != static_cast<int>(user.group) ||
        ::setfsuid(static_cast<uid_t>(-1)) != static_cast<int>(user.number))
    {
        const int error = errno;
        ::setfsuid(0);
        ::setfsgid(0);
        ::setgroups(0, nullptr);
        throw systemFailure("Cannot work with the rights of " + user.name, error);
    }
}

UsersRights::~UsersRights()
{
    if (isRoot()) {
        ::setfsuid(0);
        ::setfsgid(0);
        ::setgroups(0, nullptr);
    }
}

} // namespace ferrobank::drive
