#include "platform/Paths.h"

#include "platform/Failure.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace ferrobank::drive {

namespace {

std::filesystem::path absoluteFromEnvironment(const char* name)
{
    const char* value = std::getenv(name);
    if (value == nullptr || value[0] != '/') {
        return {};
    }
    return value;
}

std::filesystem::path homeFolder()
{
    std::filesystem::path home = absoluteFromEnvironment("HOME");
    if (home.empty()) {
        const passwd* entry = ::getpwuid(::getuid());
        if (entry != nullptr && entry->pw_dir != nullptr && entry->pw_dir[0] == '/') {
            home = entry->pw_dir;
        }
    }
    if (home.empty()) {
        throw Failure("This account has no home folder.", "no-home");
    }
    home = home.lexically_normal();
    return home.has_filename() ? home : home.parent_path();
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

std::string bootId()
{
    std::ifstream file("/proc/sys/kernel/random/boot_id");
    std::string identifier;
    std::getline(file, identifier);
    return identifier;
}

Paths Paths::of(const std::filesystem::path& home, const std::filesystem::path& runtimeRoot,
                const std::filesystem::path& configuration)
{
    Paths paths;
    paths.home = home;
    paths.drive = home / "Ferrobank";
    paths.support = home / "Library/Application Support/Ferrobank";
    paths.store = paths.support / "store";
    paths.image = paths.store / "drive.btrfs";
    paths.storeLock = paths.store / "lock";
    paths.figures = paths.store / "figures.json";
    paths.reserve = paths.store / "reserve";
    paths.unprepared = paths.store / "unprepared";
    paths.openMarker = paths.store / "open";
    paths.index = paths.support / "index";
    paths.log = paths.support / "log/ferrobank.log";
    paths.runtime =
        runtimeRoot.empty() ? home / ".cache/ferrobank" / ("run-" + bootId()) : runtimeRoot / "ferrobank";
    paths.autostartEntry = (configuration.empty() ? home / ".config" : configuration) / "autostart" /
                           "org.ferrobank.Ferrobank.agent.desktop";
    return paths;
}

Paths Paths::fromEnvironment()
{
    const std::filesystem::path home = homeFolder();
    requireNoForeignHome(home);
    return of(home, absoluteFromEnvironment("XDG_RUNTIME_DIR"), absoluteFromEnvironment("XDG_CONFIG_HOME"));
}

} // namespace ferrobank::drive
