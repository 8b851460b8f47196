#include "Ferrobank/Model/AppModel.h"

#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/CLI/CLI.h"
#include "Ferrobank/LoginServices.h"
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
      _checks(new CheckItemModel(this))
{
    _told.setupComplete = setupComplete();
    _screen = _told.setupComplete ? Screen::dashboard() : Screen::onboarding(Screen::Welcome);
    _setupWasKnown = isSetupKnown();
    connect(&_with.loginServices, &LoginServices::changed, this, &AppModel::followLoginServices);
    spawn(this, learnLoginServices());
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
    spawn(this, matchLoginItem(value));
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

QCoro::Task<> AppModel::matchLoginItem(bool wish)
{
    ++_loginWishes;
    try {
        co_await _with.loginServices.matchMenuOpensAtLogin(wish);
    } catch (const std::exception& error) {
        // No row shows this setting's failures; the next refresh puts the switch back where the system is.
        qWarning("The login item could not be changed: %s", error.what());
    }
}

QCoro::Task<> AppModel::learnLoginServices()
{
    const auto life = _lifeline.hold();
    const int wishes = _loginWishes;
    // The login item first: it is kept in files, while the agent's manager may take its time.
    const auto loginItem = co_await _with.loginServices.followMovedBundle(LoginService::MainApp);
    if (life.isCut()) {
        co_return;
    }
    if (loginItem && wishes == _loginWishes) {
        storeMenuOpensAtLogin(*loginItem == LoginServiceStatus::Enabled);
    }
    if (isSetupRecorded()) {
        co_await learnAgent();
    }
}

QCoro::Task<> AppModel::learnAgent()
{
    const auto life = _lifeline.hold();
    if (_learnsAgent) {
        co_return;
    }
    _learnsAgent = true;
    co_await _with.loginServices.followMovedBundle(LoginService::Agent);
    if (!life.isCut()) {
        _learnsAgent = false;
    }
}

void AppModel::followLoginServices()
{
    const bool complete = setupComplete();
    if (!_setupWasKnown && isSetupKnown()) {
        _setupWasKnown = true;
        if (!complete && _screen == Screen::dashboard()) {
            setScreen(Screen::onboarding(Screen::Welcome));
        }
        Q_EMIT setupKnown();
    }
    if (std::exchange(_told.setupComplete, complete) != complete) {
        Q_EMIT setupCompleteChanged();
    }
}

bool AppModel::isSetupRecorded() const
{
    return _with.defaults.boolForKey(kSetupCompleteKey);
}

bool AppModel::isSetupKnown() const
{
    return !isSetupRecorded() || _with.loginServices.known(LoginService::Agent).has_value();
}

bool AppModel::setupComplete() const
{
    return isSetupRecorded() &&
           _with.loginServices.known(LoginService::Agent).value_or(LoginServiceStatus::Enabled) ==
               LoginServiceStatus::Enabled;
}

void AppModel::lookAtSetup()
{
    if (isSetupRecorded()) {
        _with.loginServices.look(LoginService::Agent);
    }
}

bool AppModel::recordSetupComplete()
{
    return writeSetupRecord(true);
}

bool AppModel::writeSetupRecord(bool complete)
{
    const bool written = _with.defaults.setBool(kSetupCompleteKey, complete);
    _told.setupComplete = setupComplete();
    Q_EMIT setupCompleteChanged();
    lookAtSetup();
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
    co_await readLoginSetting();
    if (!life.isCut() && !isSetupKnown()) {
        spawn(this, learnAgent());
    }
}

QCoro::Task<> AppModel::readLoginSetting()
{
    const auto life = _lifeline.hold();
    const int wishes = _loginWishes;
    const auto answer = co_await _with.loginServices.ask(LoginService::MainApp);
    // An answer from before the user's latest wish is out of date. What the system has needs no matching with
    // the system.
    if (!life.isCut() && answer && wishes == _loginWishes) {
        storeMenuOpensAtLogin(*answer == LoginServiceStatus::Enabled);
    }
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
