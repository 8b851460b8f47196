#include "Ferrobank/LoginServices.h"
#include "Ferrobank/Model/AppModel.h"
#include "Ferrobank/Model/FailureText.h"
#include "Ferrobank/Words/Said.h"
#include "Platform/Clock.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace ferrobank {

namespace {

constexpr auto kLookPause = 1s;
constexpr auto kPermissionNoteAfter = 4s;
constexpr auto kMountLimit = 300s;

} // namespace

QCoro::Task<> AppModel::runSetup()
{
    const auto life = _lifeline.hold();
    changeSetupTasks(_setupTasks->replaceAll(freshSetupTasks()));
    const bool firstRun = co_await isFirstRun();
    if (life.isCut()) {
        co_return;
    }
    bool goesOn = co_await setUpLogin();
    if (goesOn) {
        goesOn = co_await setUpMount(firstRun);
    }
    if (goesOn) {
        goesOn = co_await setUpFinder();
    }
    if (goesOn && _choices.installCLI) {
        co_await installCommandLineTool();
    }
}

QCoro::Task<bool> AppModel::setUpLogin()
{
    const auto life = _lifeline.hold();
    const auto row = u"login"_s;
    updateSetupTask(row, CheckItem::State::Running);
    std::optional<QString> failure;
    try {
        co_await _with.loginServices.registerDrive();
    } catch (const std::exception& error) {
        failure = failureText(error);
    }
    if (life.isCut()) {
        co_return false;
    }
    if (failure) {
        updateSetupTask(row, CheckItem::State::Fail, failure,
                        tr("Open System Settings › General › Login Items and turn on Ferrobank."));
        co_return false;
    }
    const bool approved = co_await awaitApproval();
    if (!approved) { // nothing but the end of the model ends the wait so
        co_return false;
    }
    if (_choices.menuAtLogin != _menuOpensAtLogin) {
        const bool wish = _choices.menuAtLogin;
        storeMenuOpensAtLogin(wish);
        co_await matchLoginItem(wish);
        if (life.isCut()) {
            co_return false;
        }
    }
    updateSetupTask(row, CheckItem::State::Pass,
                    tr("Registered with macOS; it shows in System Settings › Login Items."));
    co_return true;
}

QCoro::Task<bool> AppModel::awaitApproval()
{
    const auto life = _lifeline.hold();
    bool pageIsOpen = false;
    for (;;) {
        const std::optional<bool> needed = co_await _with.loginServices.askForApproval();
        if (life.isCut()) {
            co_return false;
        }
        if (needed == false) {
            co_return true;
        }
        // Without an answer nothing is known: the row goes on telling what was true last.
        if (needed == true) {
            if (!pageIsOpen) {
                _with.loginServices.openSystemSettingsLoginItems();
                pageIsOpen = true;
            }
            updateSetupTask(
                u"login"_s, CheckItem::State::Fail, tr("Ferrobank is switched off in Login Items."),
                tr("Turn on Ferrobank in the Login Items window that just opened; setup continues on "
                   "its own."));
        }
        co_await _with.clock.sleep(kLookPause);
        if (life.isCut()) {
            co_return false;
        }
    }
}

QCoro::Task<bool> AppModel::setUpMount(bool firstRun)
{
    const auto life = _lifeline.hold();
    // An earlier attempt failed: this is what makes another try succeed once the user has granted access. The
    // wait below still begins with the status from before the restart.
    if (_status && _status->attach_error) {
        const QStringList args{u"restart"_s};
        co_await runIgnoringFailure(args);
        if (life.isCut()) {
            co_return false;
        }
    }
    updateSetupTask(u"mount"_s, CheckItem::State::Running,
                    firstRun ? tr("Formatting an 8 TB volume. This takes a moment the first time.")
                             : tr("Starting the drive."));
    const auto start = _with.clock.wallTime();
    for (;;) {
        const MountWait wait = lookAtMount(_with.clock.wallTime() - start);
        if (wait != MountWait::GoesOn) {
            co_return wait == MountWait::Mounted;
        }
        co_await _with.clock.sleep(kLookPause);
        if (life.isCut()) {
            co_return false;
        }
        co_await refresh();
        if (life.isCut()) {
            co_return false;
        }
    }
}

AppModel::MountWait AppModel::lookAtMount(std::chrono::system_clock::duration waited)
{
    const auto row = u"mount"_s;
    if (isMounted()) {
        updateSetupTask(row, CheckItem::State::Pass, tr("Mounted at ~/Ferrobank."));
        return MountWait::Mounted;
    }
    if (_status && _status->attach_error) {
        updateSetupTask(row, CheckItem::State::Fail,
                        tr("The drive could not be attached: %1").arg(said(*_status->attach_error)),
                        tr("If you clicked Don't Allow, open Privacy & Security › Files & Folders, turn on "
                           "Network Volumes for Ferrobank, then click Try Again."));
        return MountWait::Failed;
    }
    if (waited > kMountLimit) {
        updateSetupTask(row, CheckItem::State::Fail, tr("The drive did not mount within 5 minutes."),
                        tr("Choose Show Log from the Ferrobank menu; the last lines name what blocked the "
                           "mount."));
        return MountWait::Failed;
    }
    if (waited > kPermissionNoteAfter) {
        updateSetupTask(
            row, CheckItem::State::AwaitingUser,
            tr("macOS is asking for your permission. In the dialog “Ferrobank would like to access "
               "files on a network volume”, click Allow. The drive is served from this Mac over a "
               "private connection that never leaves it."));
    }
    return MountWait::GoesOn;
}

QCoro::Task<bool> AppModel::setUpFinder()
{
    const auto life = _lifeline.hold();
    const auto row = u"finder"_s;
    updateSetupTask(row, CheckItem::State::Running);
    if (_status) {
        co_await ensureVolumeIcon(_status->mountpoint);
    }
    if (life.isCut()) {
        co_return false;
    }
    updateSetupTask(row, CheckItem::State::Pass,
                    tr("In Finder's sidebar under Locations, with its own icon."));
    co_return true;
}

} // namespace ferrobank
