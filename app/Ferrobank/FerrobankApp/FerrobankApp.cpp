#include "Ferrobank/FerrobankApp/FerrobankApp.h"

#include "Ferrobank/FerrobankApp/LaunchRule.h"
#include "Ferrobank/Words/Said.h"
#include "Platform/Bundle.h"
#include "Platform/Memory.h"
#include "Platform/Notification.h"
#include "Platform/UpdateController.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QTimer>
#include <QtGui/QGuiApplication>
#include <QtGui/QSessionManager>

#include <chrono>

namespace ferrobank {

namespace {

/// After this the start is over: the item is in the panel, the first poll was made.
constexpr std::chrono::seconds kStarted{5};

QString text(const std::filesystem::path& path)
{
    return QString::fromStdString(path);
}

} // namespace

FerrobankApp::FerrobankApp(DesktopSession& session)
    : _statusItem(session.makeStatusItem()),
      _system(System::make({
          .openLoginItems = [this] { _windows->openLoginItems(); },
          .tell = [this](const QString& words) { _windows->showAlert(said(words)); },
          .explain = [this](const QString& words) { return _windows->askToGoOn(said(words)); },
          .activationToken = [this] { return _menu->takeActivationToken(); },
          .quit = [this] { _windows->quit(); },
      })),
      _tool(text(Bundle::main().driveTool())),
      _cli(_tool, _toolJournal),
      _loginServices(_system->registry(), _registryWork),
      _commandLineTool(text(Bundle::main().atStablePath().driveTool()), _system->privilegedLink()),
      _model(std::make_unique<AppModel>(ModelCollaborators{
          .cli = _cli,
          .loginServices = _loginServices,
          .commandLineTool = _commandLineTool,
          .workspace = _system->workspace(),
          .settingsPages = _system->settingsPages(),
          .defaults = _system->defaults(),
          .volumes = _system->volumes(),
          .clock = _system->clock(),
          .home = QDir::homePath(),
          .volumeIcon = text(Bundle::main().resource("VolumeIcon.icns")),
      })),
      _diagnostics({
          .model = *_model,
          .loginServices = _loginServices,
          .cli = _cli,
          .journal = _toolJournal,
          .system = _system->report(),
          .version = QCoreApplication::applicationVersion(),
          .toolkit = QStringLiteral("Qt %1 on %2")
                         .arg(QString::fromUtf8(qVersion()), QGuiApplication::platformName()),
          .home = QDir::homePath(),
      }),
      _windows(std::make_unique<Windows>(WindowsCollaborators{
          .model = *_model,
          .loginServices = _loginServices,
          .commandLineTool = _commandLineTool,
          .workspace = _system->workspace(),
          .settingsPages = _system->settingsPages(),
          .volumes = _system->volumes(),
          .diagnostics = _diagnostics,
          .home = QDir::homePath(),
      })),
      _updater(std::make_unique<Updater>(UpdaterCollaborators{
          .makeController =
              [this](UpdateDelegate& delegate) {
                  return _system->makeUpdateController(delegate, _windows->updates());
              },
          .setupComplete = [this] { return _model->setupComplete(); },
          .windows = presentWindows,
      })),
      _systemChanges(session.watchSystem()),
      _menu(std::make_unique<TrayMenu>(TrayMenuCollaborators{
          .model = *_model,
          .commandLineTool = _commandLineTool,
          .workspace = _system->workspace(),
          .item = *_statusItem,
          .systemChanges = *_systemChanges,
          .openWindow = [this](const QString& token) { _windows->openMain(token); },
          .checkForUpdates = [this] { _updater->checkForUpdates(); },
          .showAlert = [this](const QString& words) { _windows->showAlert(said(words)); },
          .quit = [this] { _windows->quit(); },
      })),
      _terminationSignals(TerminationSignals::watch([] { QCoreApplication::quit(); }))
{
    connect(_statusItem.get(), &StatusItem::activated, this, &FerrobankApp::openWindow);
    connect(_windows.get(), &Windows::closed, this, [this] { _updater->reconsider(); });
    connect(_windows.get(), &Windows::mainClosed, this, &FerrobankApp::tellOfBackground);
    connect(_model.get(), &AppModel::setupCompleteChanged, this, [this] { _updater->reconsider(); });
    session.instance().serve([this](const InstanceRequest& request) { return carryOut(request); });

    // The entry for login starts the program again; a session that restores it as well would start it twice.
    const auto neverRestart = [](QSessionManager& manager) {
        manager.setRestartHint(QSessionManager::RestartNever);
    };
    connect(qGuiApp, &QGuiApplication::saveStateRequest, this, neverRestart);
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, neverRestart);
}

FerrobankApp::~FerrobankApp() = default;

void FerrobankApp::launch(const InstanceRequest& request)
{
    if (!request.action.isEmpty() && carryOut(request)) {
        // The command has brought up what it is about.
    } else if (_model->isSetupKnown()) {
        openWindowUnlessSetUp(request.activationToken);
    } else {
        connect(_model.get(), &AppModel::setupKnown, this,
                [this, token = request.activationToken] { openWindowUnlessSetUp(token); });
    }
    QTimer::singleShot(kStarted, &returnIdleMemory);
}

void FerrobankApp::openWindowUnlessSetUp(const QString& activationToken)
{
    if (!_model->setupComplete()) {
        _windows->openMain(activationToken);
    }
}

bool FerrobankApp::carryOut(const InstanceRequest& request)
{
    if (request.action.isEmpty()) {
        openWindow(request.activationToken);
        return true;
    }
    const std::optional<MenuItem> item = menuItemFromAction(request.action);
    if (item && !_menu->choose(*item, request.activationToken)) {
        // A starter shows its actions at all times; where one is of no use now, the window says what is.
        openWindow(request.activationToken);
    }
    return item.has_value();
}

void FerrobankApp::tellOfBackground()
{
    if (_toldOfBackground || _statusItem->isSeen()) {
        return;
    }
    _toldOfBackground = true;
    notifyUser(
        tr("Ferrobank goes on in the background"),
        tr("This desktop shows no icon for it. Open Ferrobank again to see your drive; the menu of its icon "
           "among your applications has Run Checks and Quit."));
}

void FerrobankApp::openWindow(const QString& activationToken)
{
    _model->lookAtSetup();
    if (!_windows->mainIsVisible()) {
        _model->setScreen(
            screenForOpening(_model->setupComplete(), _model->screen(), _model->uninstallState()));
    }
    _windows->openMain(activationToken);
}

} // namespace ferrobank
