#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

namespace ferrobank::drive {

/// One user as the password data base has it. Plain value.
struct User {
    uid_t number = 0;
    gid_t group = 0;
    std::string name;
    std::filesystem::path home;

    /// Throw Failure when there is no such user, it is root, or it has no home folder.
    [[nodiscard]] static User numbered(uid_t number);
    [[nodiscard]] static User named(const std::string& name);
    /// Who called pkexec(1), from PKEXEC_UID.
    [[nodiscard]] static User calling();
};

/// While this lives, files are looked at and opened with a user's own rights instead of root's (setfsuid(2)),
/// links and permissions included; everything else is still done as root. For a program with one thread. Does
/// nothing in a process that is not root's. Throws Failure when the system refuses.
class UsersRights {
public:
    explicit UsersRights(const User& user);
    UsersRights(const UsersRights&) = delete;
    UsersRights& operator=(const UsersRights&) = delete;
    ~UsersRights();
};

} // namespace ferrobank::drive
