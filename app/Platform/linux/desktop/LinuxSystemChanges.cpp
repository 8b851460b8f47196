#include "Platform/linux/desktop/LinuxSystemChanges.h"

#include <QtCore/QStandardPaths>

#include <chrono>
#include <string>
#include <utility>

namespace ferrobank {

namespace {

/// Replacing a file is several events, and enabling a unit several files.
constexpr std::chrono::milliseconds kSettled(20);

std::filesystem::path folder(QStandardPaths::StandardLocation location)
{
    return QStandardPaths::writableLocation(location).toStdString();
}

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
    const std::string application = "org.ferrobank.Ferrobank";
    const std::string unit = application + ".agent.service";
    const std::filesystem::path config = folder(QStandardPaths::GenericConfigLocation);
    const std::filesystem::path data = folder(QStandardPaths::GenericDataLocation);
    std::vector<std::filesystem::path> files{
        config / (application + ".conf"),
        config / "autostart" / (application + ".desktop"),
        config / "autostart" / (application + ".agent.desktop"),
        config / "systemd/user" / unit,
        config / "systemd/user/default.target.wants" / unit,
        data / "systemd/user" / unit,
        "/usr/local/bin/ferrobank",
    };
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime != nullptr && *runtime == '/') {
        files.push_back(std::filesystem::path(runtime) / "systemd/user" / unit);
    }
    return files;
}

} // namespace ferrobank
