#include "platform/Paths.h"

#include "platform/Files.h"

#include <algorithm>
#include <cstdlib>

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

Paths withHome(const std::filesystem::path& given)
{
    const std::filesystem::path home = given.lexically_normal();
    return Paths::of(home.has_filename() ? home : home.parent_path(),
                     absoluteFromEnvironment("XDG_RUNTIME_DIR"), absoluteFromEnvironment("XDG_CONFIG_HOME"));
}

} // namespace

std::string bootId()
{
    std::string identifier = readSmallFile("/proc/sys/kernel/random/boot_id").value_or(std::string());
    identifier.resize(std::min(identifier.size(), identifier.find('\n')));
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
    paths.work = paths.support / "work";
    paths.log = paths.support / "log/ferrobank.log";
    paths.runtime =
        runtimeRoot.empty() ? home / ".cache/ferrobank" / ("run-" + bootId()) : runtimeRoot / "ferrobank";
    paths.autostartEntry = (configuration.empty() ? home / ".config" : configuration) / "autostart" /
                           "org.ferrobank.Ferrobank.agent.desktop";
    return paths;
}

std::optional<Paths> Paths::fromVariables()
{
    const std::filesystem::path home = absoluteFromEnvironment("HOME");
    return home.empty() ? std::nullopt : std::optional(withHome(home));
}

Paths Paths::ofHome(const std::filesystem::path& home)
{
    return withHome(home);
}

} // namespace ferrobank::drive
