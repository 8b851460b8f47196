#include "login/LoginStart.h"

#include "login/UserManager.h"
#include "platform/Files.h"

#include <chrono>
#include <cstdlib>
#include <sstream>
#include <thread>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr std::chrono::seconds kStopLimit{30};
constexpr std::chrono::milliseconds kStopStep{50};

std::filesystem::path unitFile(const Paths& paths)
{
    const char* data = std::getenv("XDG_DATA_HOME");
    const std::filesystem::path root =
        data != nullptr && data[0] == '/' ? std::filesystem::path(data) : paths.home / ".local/share";
    return root / "systemd/user" / LoginStart::kUnit;
}

bool isDown(const std::string& activeState)
{
    return activeState.empty() || activeState == "inactive" || activeState == "failed";
}

} // namespace

bool isSwitchedOff(const std::string& entry)
{
    std::istringstream lines(entry);
    bool inMainGroup = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('[')) {
            inMainGroup = line == "[Desktop Entry]";
        }
        if (inMainGroup && (line == "Hidden=true" || line == "X-GNOME-Autostart-enabled=false")) {
            return true;
        }
    }
    return false;
}

LoginStart::LoginStart(Paths paths, Log log) : _paths(std::move(paths)), _log(std::move(log)) {}

bool LoginStart::isOn() const
{
    if (std::optional<UserManager> manager = UserManager::connect()) {
        const std::string state = manager->unitFileState(kUnit);
        if (state.starts_with("enabled")) {
            return true;
        }
    }
    const std::optional<std::string> entry = readSmallFile(_paths.autostartEntry);
    return entry && !isSwitchedOff(*entry);
}

bool LoginStart::start() const
{
    std::optional<UserManager> manager = UserManager::connect();
    if (!manager) {
        return false;
    }
    const std::string state = manager->unitFileState(kUnit);
    return !state.empty() && !state.starts_with("masked") && manager->start(kUnit);
}

void LoginStart::takeAway() const
{
    removeIfPresent(_paths.autostartEntry);
    std::optional<UserManager> manager = UserManager::connect();
    if (!manager) {
        return;
    }
    const std::string state = manager->unitFileState(kUnit);
    if (state.empty()) {
        return;
    }
    manager->stop(kUnit);
    const auto limit = std::chrono::steady_clock::now() + kStopLimit;
    while (!isDown(manager->activeState(kUnit)) && std::chrono::steady_clock::now() < limit) {
        std::this_thread::sleep_for(kStopStep);
    }
    if (!state.starts_with("masked") && !manager->disable(kUnit)) {
        _log.write("The login service could not be switched off.");
        return;
    }
    removeIfPresent(unitFile(_paths));
    manager->reload();
}

} // namespace ferrobank::drive
