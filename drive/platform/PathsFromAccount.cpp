// Apart from the other paths: the account's data base needs libraries that a static program cannot load.

#include "platform/Failure.h"
#include "platform/Paths.h"

#include <pwd.h>
#include <unistd.h>

namespace ferrobank::drive {

Paths Paths::fromEnvironment()
{
    if (const std::optional<Paths> paths = fromVariables()) {
        return *paths;
    }
    const passwd* entry = ::getpwuid(::getuid());
    if (entry == nullptr || entry->pw_dir == nullptr || entry->pw_dir[0] != '/') {
        throw Failure("This account has no home folder.", "no-home");
    }
    return ofHome(entry->pw_dir);
}

} // namespace ferrobank::drive
