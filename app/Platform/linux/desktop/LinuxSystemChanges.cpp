#include "Platform/linux/desktop/LinuxSystemChanges.h"

#include "Platform/linux/login/LoginNames.h"
#include "Platform/linux/login/UserFolders.h"

#include <chrono>
#include <cstdlib>
#include <optional>
#include <utility>

namespace ferrobank {

namespace {

/// Replacing a file is several events, and enabling a unit several files.
constexpr std::chrono::milliseconds kSettled(20);

} // namespace

LinuxSystemChanges::LinuxSystemChanges(std::vector<std::filesystem::path> files, QObject* parent)
    : SystemChanges(parent), _watch(std::move(files), [this] { _settled.start(); })
{
    _settled.setSingleShot(true);
    _settled.setInterval(kSettled);
    connect(&_settled, &QTimer::timeout, this, &SystemChanges::changed);
}

std::vector<std::filesystem::path> LinuxSystemChanges::filesOfUser()
{
    std::vector<std::filesystem::path> files{"/usr/local/bin/ferrobank"};
    if (const std::optional<UserFolders> folders = UserFolders::ofProcess()) {
        files.push_back(folders->config / "org.ferrobank.Ferrobank.conf");
        files.push_back(folders->autostart() / kLoginItemEntry);
        files.push_back(folders->autostart() / kAgentEntry);
        files.push_back(folders->userUnits() / kAgentUnit);
        files.push_back(folders->unitSwitches() / kAgentUnit);
        files.push_back(folders->unitSwitches() / "default.target.wants" / kAgentUnit);
        files.push_back(folders->unitSwitches() / kLoginItemUnit);
    }
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime != nullptr && *runtime == '/') {
        // Switches that last until the end of the session.
        files.push_back(std::filesystem::path(runtime) / "systemd/user" / kAgentUnit);
    }
    return files;
}

} // namespace ferrobank
