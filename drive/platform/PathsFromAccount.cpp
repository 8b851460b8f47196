// Apart from the other paths: the account's data base needs libraries that a static program cannot load.

#include "platform/Failure.h"
#include "platform/Paths.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ferrobank::drive {

namespace {

Paths fromAccount()
{
    const passwd* entry = ::getpwuid(::getuid());
    if (entry == nullptr || entry->pw_dir == nullptr || entry->pw_dir[0] != '/') {
        throw Failure("This account has no home folder.", "no-home");
    }
    return Paths::ofHome(entry->pw_dir);
}

/// Some systems leave HOME as it was when a user becomes root. Root would then follow the user's links and
/// leave files that the user cannot touch.
void requireNoForeignHome(const std::filesystem::path& home)
{
    struct stat facts{};
    if (::geteuid() == 0 && ::stat(home.c_str(), &facts) == 0 && facts.st_uid != 0) {
        throw Failure("As root, this command would work on another user's home folder, " + home.string() +
                          ". Run it as that user.",
                      "foreign-home");
    }
}

} // namespace

Paths Paths::fromEnvironment()
{
    const std::optional<Paths> named = fromVariables();
    Paths paths = named ? *named : fromAccount();
    requireNoForeignHome(paths.home);
    return paths;
}

} // namespace ferrobank::drive
