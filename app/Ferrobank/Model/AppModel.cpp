#include "Ferrobank/Model/AppModel.h"

#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/CLI/CLI.h"
#include "Ferrobank/Service.h"
#include "Platform/Clock.h"
#include "Platform/Defaults.h"
#include "Platform/Volumes.h"
#include "Platform/Workspace.h"

#include <QtCore/QDebug>
#include <QtCore/QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace ferrobank {

namespace {

constexpr auto kPollPause = 5s;
const auto kSetupCompleteKey = u"setupComplete"_s;

} // namespace

AppModel::AppModel(ModelCollaborators collaborators, QObject* parent)
    : QObject(parent),
      _with(std::move(collaborators)),
      _setupTasks(new CheckItemModel(this)),
      _checks(new CheckItemModel(this)),
      _menuOpensAtLogin(_with.service.mainAppStatus() == LoginServiceStatus::Enabled)
{
    _screen = setupComplete() ? Screen::dashboard() : Screen::onboarding(Screen::Welcome);
    // Not from inside the constructor: nobody is connected yet, and the first tool runs would delay the tray.
    QMetaObject::invokeMethod(
        this,
        [this] {
            spawn(this, startUp());
            spawn(this, pollStatus());
        },
        Qt::QueuedConnection);
}

AppModel::~AppModel() = default;

void AppModel::setScreen(Screen screen)
{
    if (_screen != screen) {
        _screen = screen;
        Q_EMIT screenChanged();
    }
}

void AppModel::setChoices(SetupChoices choices)
{
    if (_choices != choices) {
        _choices = choices;
        Q_EMIT choicesChanged();
    }
}

void AppModel::setMenuOpensAtLogin(bool value)
{
    const bool changed = _menuOpensAtLogin != value;
    _menuOpensAtLogin = value;
    matchLoginItem();
    if (changed) {
        Q_EMIT menuOpensAtLoginChanged();
    }
}

void AppModel::storeMenuOpensAtLogin(bool value)
{
    if (_menuOpensAtLogin != value) {
        _menuOpensAtLogin = value;
        Q_EMIT menuOpensAtLoginChanged();
    }
}

void AppModel::matchLoginItem()
{
    try {
        const bool enabled = _with.service.mainAppStatus() == LoginServiceStatus::Enabled;
        if (enabled != _menuOpensAtLogin) {
            _with.service.setMenuOpensAtLogin(_menuOpensAtLogin);
        }
    } catch (const std::exception& error) {
        // No row shows this setting's failures; the next refresh puts the switch back where the system is.
        qWarning("The login item could not be changed: %s", error.what());
    }
}

bool AppModel::setupComplete() const
{
    return _with.defaults.boolForKey(kSetupCompleteKey) &&
           _with.service.agentStatus() == LoginServiceStatus::Enabled;
}

bool AppModel::recordSetupComplete()
{
    return writeSetupRecord(true);
}

bool AppModel::writeSetupRecord(bool complete)
{
    const bool written = _with.defaults.setBool(kSetupCompleteKey, complete);
    Q_EMIT setupCompleteChanged();
    return written;
}

QCoro::Task<> AppModel::refresh()
{
    const auto life = _lifeline.hold();
    const QStringList args{u"status"_s, u"--json"_s};
    std::optional<DriveStatus> answer = co_await _with.cli.json<DriveStatus>(args);
    if (life.isCut()) {
        co_return;
    }
    if (answer) {
        setStatus(*std::move(answer));
    }
    // What the system has needs no matching with the system.
    storeMenuOpensAtLogin(_with.service.mainAppStatus() == LoginServiceStatus::Enabled);
}

void AppModel::setStatus(DriveStatus status)
{
    _status = std::move(status);
    Q_EMIT statusChanged();
}

QCoro::Task<> AppModel::startUp()
{
    const auto life = _lifeline.hold();
    co_await refresh();
    if (life.isCut()) {
        co_return;
    }
    if (_status && _status->update_pending.value_or(false)) {
        const QStringList args{u"restart"_s, u"--keep-mounted"_s};
        co_await runIgnoringFailure(args);
    }
}

QCoro::Task<> AppModel::pollStatus()
{
    const auto life = _lifeline.hold();
    while (!life.isCut()) {
        co_await refresh();
        if (!life.isCut() && _status && _status->mounted) {
            co_await ensureVolumeIcon(_status->mountpoint);
        }
        if (!life.isCut()) {
            co_await _with.clock.sleep(kPollPause);
        }
    }
}

QCoro::Task<> AppModel::ensureVolumeIcon(QString mountpoint)
{
    const auto life = _lifeline.hold();
    // A volume that does not answer is left alone, like one that has an icon.
    const std::optional<bool> present = co_await _with.volumes.exists(mountpoint + u"/.VolumeIcon.icns"_s);
    if (life.isCut() || present.value_or(true) || !QFileInfo::exists(_with.volumeIcon)) {
        co_return;
    }
    co_await _with.workspace.setVolumeIcon(_with.volumeIcon, mountpoint);
}

QCoro::Task<bool> AppModel::isFirstRun()
{
    const QString store = _with.home + u"/Library/Application Support/Ferrobank/store"_s;
    const std::optional<bool> present = co_await _with.volumes.exists(store);
    co_return !present.value_or(true);
}

QCoro::Task<> AppModel::runIgnoringFailure(QStringList args)
{
    try {
        co_await _with.cli.run(args);
    } catch (const std::exception& error) {
        // What came of it is seen in the next status.
        qWarning("%s: %s", qUtf8Printable(args.join(u' ')), error.what());
    }
}

void AppModel::tellDerived()
{
    const Derived now{.setupDone = setupDone(), .mountFailed = mountFailed(), .checksPassed = checksPassed()};
    const Derived before = std::exchange(_told, now);
    if (before.setupDone != now.setupDone) {
        Q_EMIT setupDoneChanged();
    }
    if (before.mountFailed != now.mountFailed) {
        Q_EMIT mountFailedChanged();
    }
    if (before.checksPassed != now.checksPassed) {
        Q_EMIT checksPassedChanged();
    }
}

} // namespace ferrobank
