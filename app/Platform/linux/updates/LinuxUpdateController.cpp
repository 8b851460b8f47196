#include "Platform/linux/updates/LinuxUpdateController.h"

#include "Platform/linux/desktop/FileWatch.h"
#include "Platform/linux/updates/install/InstallPlace.h"
#include "Platform/linux/updates/install/Trial.h"
#include "Platform/linux/updates/session/BootClock.h"
#include "Platform/linux/updates/session/DesktopSurroundings.h"
#include "Platform/linux/updates/session/ProcessWorker.h"
#include "Platform/linux/updates/session/UpdateSession.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTimer>

namespace ferrobank {
namespace {

using namespace updates;

UpdateConfiguration configurationOf(const std::filesystem::path& bundle)
{
    const auto list = PropertyList::read(bundle / "Contents/Info.plist");
    return list ? readConfiguration(*list) : UpdateConfiguration();
}

std::filesystem::path propertyListInPlace(const std::filesystem::path& bundle)
{
    return InstallPlace::of(bundle).stableRoot() / "Contents/Info.plist";
}

/// Unpacking a package replaces one file after the other.
constexpr std::chrono::seconds kSettled{3};

class LinuxUpdateController final : public UpdateController {
public:
    LinuxUpdateController(const std::filesystem::path& bundle, UpdateDelegate& delegate,
                          UpdateInterface& interface, Workspace& workspace, std::function<void()> quit)
        : _surroundings(workspace),
          _worker(QString::fromStdString(InstallPlace::of(bundle).stableRoot() /
                                         "Contents/Helpers/ferrobank-update")),
          _session(SessionCollaborators{
              .configuration = configurationOf(bundle),
              .bundle = QString::fromStdString(bundle),
              .delegate = delegate,
              .interface = interface,
              .surroundings = _surroundings,
              .worker = _worker,
              .clock = _clock,
              .states = _stateFile,
              .quit = std::move(quit),
              .isOnTrial = [bundle] { return trialAt(InstallPlace::of(bundle)).has_value(); },
              .versionInPlace =
                  [bundle] { return configurationOf(InstallPlace::of(bundle).stableRoot()).version; },
              .random = {},
          }),
          _watch({propertyListInPlace(bundle)}, [this] { _settled.start(kSettled); })
    {
        _settled.setSingleShot(true);
        QObject::connect(&_settled, &QTimer::timeout, &_session, [this] { _session.bundleChanged(); });
        _session.start();
        QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &_session,
                         [this] { _session.applicationQuits(); });
    }

    void checkForUpdates() override { _session.checkForUpdates(); }

    void reconsider() override { _session.reconsider(); }

private:
    BootClock _clock;
    DesktopSurroundings _surroundings;
    ProcessWorker _worker;
    UpdateStateFile _stateFile{UpdateStateFile::usualPlace()};
    UpdateSession _session;
    QTimer _settled;
    FileWatch _watch;
};

} // namespace

std::unique_ptr<UpdateController> makeLinuxUpdateController(const std::filesystem::path& bundle,
                                                            UpdateDelegate& delegate,
                                                            UpdateInterface& interface, Workspace& workspace,
                                                            std::function<void()> quit)
{
    return std::make_unique<LinuxUpdateController>(bundle, delegate, interface, workspace, std::move(quit));
}

} // namespace ferrobank
