#include "platform/Paths.h"

#include "platform/Failure.h"

#include <pwd.h>
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
    paths.readingDue = paths.store / "reading-due";
    paths.unreadable = paths.store / "unreadable";
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
    return of(homeFolder(), absoluteFromEnvironment("XDG_RUNTIME_DIR"),
              absoluteFromEnvironment("XDG_CONFIG_HOME"));
}

} // namespace ferrobank::drive
