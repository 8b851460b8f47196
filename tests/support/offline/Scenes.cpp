#include "support/offline/Scenes.h"

#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/Views/RootPresenter.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;
using State = CheckItem::State;

/// In the words of the system and the language that are installed when the scenes are made.
QString inWords(const QString& text)
{
    return QCoreApplication::translate("Scenes", text.toUtf8().constData());
}

std::optional<QString> inWords(const std::optional<QString>& text)
{
    return text ? std::optional(inWords(*text)) : std::nullopt;
}

CheckItem row(const QString& id, const QString& title, State state, std::optional<QString> detail = {},
              std::optional<QString> fix = {}, std::optional<FixAction> action = {})
{
    return {id, inWords(title), state, inWords(detail), inWords(fix), action};
}

QList<CheckItem> passedChecks()
{
    return {row(u"running"_s, u"Ferrobank is running"_s, State::Pass, u"Process 2154, since 9:41."_s),
            row(u"drive"_s, u"Drive is mounted and writable"_s, State::Pass, u"Mounted at ~/Ferrobank."_s),
            row(u"login"_s, u"Starts at login"_s, State::Pass),
            row(u"space"_s, u"Room on this computer"_s, State::Pass, u"212.4 GB are free."_s)};
}

QList<CheckItem> failingChecks()
{
    return {
        row(u"running"_s, u"Ferrobank is running"_s, State::Fail, u"The drive's service does not answer."_s,
            u"Restart the drive; your files are safe."_s, FixAction::Restart),
        row(u"drive"_s, u"Drive is mounted and writable"_s, State::AwaitingUser,
            u"Waiting for your permission to reach network volumes."_s, std::nullopt,
            FixAction::PrivacySettings),
        row(u"login"_s, u"Starts at login"_s, State::Fail, u"Ferrobank is switched off in Login Items."_s,
            std::nullopt, FixAction::LoginItems),
        row(u"space"_s, u"Room on this computer"_s, State::Fail, u"1.2 GB are free; the drive needs 5 GB."_s,
            u"Empty the Trash or move large files away."_s, FixAction::StorageSettings),
        row(u"cache"_s, u"Index is up to date"_s, State::Running),
        row(u"clock"_s, u"Clock agrees with the store"_s, State::Skipped, u"The drive is not mounted."_s),
        row(u"versions"_s, u"Tool and service have the same version"_s, State::Pending)};
}

QList<CheckItem> manyChecks()
{
    QList<CheckItem> rows;
    for (int number = 1; number <= 40; ++number) {
        const auto state = number % 9 == 0 ? State::Fail : State::Pass;
        std::optional<QString> detail;
        if (number % 3 == 0) {
            detail = u"Looked at %1 blocks."_s.arg(number * 1377);
        }
        const auto action =
            state == State::Fail ? std::optional(FixAction::Restart) : std::optional<FixAction>();
        rows << row(u"check%1"_s.arg(number), u"Part %1 of the store is sound"_s.arg(number), state, detail,
                    std::nullopt, action);
    }
    return rows;
}

QList<CheckItem> setupRows(State login, State mount, State finder, State cli)
{
    return {row(u"login"_s, u"Start your drive at login"_s, login),
            row(u"mount"_s, u"Create and mount your drive at ~/Ferrobank"_s, mount),
            row(u"finder"_s, u"Add the drive to Finder"_s, finder),
            row(u"cli"_s, u"Install the ferrobank command"_s, cli)};
}

QString longPath()
{
    QString path = u"/home/anna/Ferrobank"_s;
    while (path.size() < 200) {
        path += u"/a folder with a rather long name"_s;
    }
    return path.left(200);
}

DriveStatus usualStatus()
{
    DriveStatus status = mountedStatus();
    status.volume_used = 48'600'000'000U;
    status.store_bytes = 11'600'000'000U;
    status.saved = 37'000'000'000U;
    return status;
}

void setUp(Stage& stage, const DriveStatus& status)
{
    stage.seam.finishSetup();
    stage.seam.cli.answerStatus(status);
    stage.seam.volumes.capacities.insert(FakeSeam::kHome, {494'380'000'000U, 212'400'000'000U});
    stage.seam.volumes.capacities.insert(FakeSeam::kMountpoint, {8'000'000'000'000U, 7'900'000'000'000U});
    stage.seam.registry.mainApp.status = LoginServiceStatus::Enabled;
}

std::function<void(Stage&)> with(const DriveStatus& status)
{
    return [status](Stage& stage) { setUp(stage, status); };
}

std::function<void(Stage&)> checked(const QList<CheckItem>& rows)
{
    return [rows](Stage& stage) { stage.model().checkRows()->replaceAll(rows); };
}

std::function<void(Stage&)> on(Screen screen, const QList<CheckItem>& checks = passedChecks())
{
    return [screen, checks](Stage& stage) {
        stage.model().setScreen(screen);
        stage.model().checkRows()->replaceAll(checks);
    };
}

std::function<void(Stage&)> setup(const QList<CheckItem>& rows)
{
    return [rows](Stage& stage) {
        stage.model().setScreen(Screen::onboarding(Screen::Setup));
        stage.model().setupTaskRows()->replaceAll(rows);
    };
}

QList<CheckItem> worded(QList<CheckItem> rows, const QString& id, const QString& detail,
                        std::optional<QString> fix = {})
{
    for (CheckItem& item : rows) {
        if (item.id == id) {
            item.detail = inWords(detail);
            item.fix = inWords(fix);
        }
    }
    return rows;
}

void startChecks(Stage& stage)
{
    stage.seam.cli.holdLines();
    spawn(&stage.model(), stage.model().runChecks());
    stage.seam.cli.pushLine(toJson(passedChecks().at(0)));
    CheckItem drive = passedChecks().at(1);
    drive.state = State::Running;
    drive.detail.reset();
    stage.seam.cli.pushLine(toJson(drive));
}

std::function<void(Stage&)> uninstalled(const FakeCLI::Answer& answer)
{
    return [answer](Stage& stage) {
        const QStringList args{u"uninstall"_s, u"--export"_s, u"/home/anna/Ferrobank Files"_s};
        stage.seam.cli.answer(args, answer);
        stage.model().setScreen(Screen::uninstall());
        spawn(&stage.model(), stage.model().uninstall(u"/home/anna/Ferrobank Files"_s, false));
    };
}

void installCommand(Stage& stage)
{
    QFile::link(stage.seam.cli.url(), stage.seam.commandLineTool.link());
}

using Scene = OfflineScene;

std::vector<Scene> dashboardScenes()
{
    DriveStatus fresh = mountedStatus();
    fresh.saved = 0;
    DriveStatus notSetUp = unmountedStatus();
    notSetUp.installed = false;
    DriveStatus huge = usualStatus();
    huge.volume_used = 9'223'372'036'854'775'807U;
    huge.store_bytes = 1'234'567U;
    huge.saved = 9'223'372'036'853'541'240U;
    DriveStatus poor = usualStatus();
    poor.store_bytes = 60'000'000'000U;
    poor.saved = 1'000U;
    DriveStatus longMount = usualStatus();
    longMount.mountpoint = longPath();
    const auto attention = attachErrorStatus(
        u"The private connection to 127.0.0.1 was refused (permission denied). Allow Ferrobank to use network volumes and try again."_s);

    const auto passed = checked(passedChecks());
    return {
        {u"dashboard-waiting"_s,
         Scene::Window::Main,
         [](Stage& stage) {
             setUp(stage, mountedStatus());
             stage.seam.cli.hold(FakeCLI::kStatus);
         },
         {},
         {}},
        {u"dashboard"_s,
         Scene::Window::Main,
         [](Stage& stage) {
             setUp(stage, usualStatus());
             installCommand(stage);
         },
         passed,
         {}},
        {u"dashboard-no-command"_s, Scene::Window::Main, with(usualStatus()), passed, {}},
        {u"dashboard-nothing-saved"_s, Scene::Window::Main, with(fresh), passed, {}},
        {u"dashboard-starting"_s, Scene::Window::Main, with(unmountedStatus()), checked(failingChecks()), {}},
        {u"dashboard-attention"_s, Scene::Window::Main, with(attention), checked(failingChecks()), {}},
        {u"dashboard-not-set-up"_s, Scene::Window::Main, with(notSetUp), checked(failingChecks()), {}},
        {u"dashboard-checks-running"_s, Scene::Window::Main, with(usualStatus()), startChecks, {}},
        {u"dashboard-huge"_s, Scene::Window::Main, with(huge), passed, {}},
        {u"dashboard-poor"_s, Scene::Window::Main, with(poor), passed, {}},
        {u"dashboard-long-path"_s, Scene::Window::Main, with(longMount), passed, {}},
    };
}

std::vector<Scene> onboardingScenes()
{
    const auto step = [](Screen::Step shown) { return on(Screen::onboarding(shown)); };
    const auto running =
        worded(setupRows(State::Pass, State::Running, State::Pending, State::Pending), u"mount"_s,
               u"Formatting an 8 TB volume. This takes a moment the first time."_s);
    const auto approval = worded(
        setupRows(State::Fail, State::Pending, State::Pending, State::Pending), u"login"_s,
        u"Ferrobank is switched off in Login Items."_s,
        u"Turn on Ferrobank in the Login Items window that just opened; setup continues on its own."_s);
    const auto permission = worded(
        setupRows(State::Pass, State::AwaitingUser, State::Pending, State::Pending), u"mount"_s,
        u"macOS is asking for your permission. In the dialog “Ferrobank would like to access files on a network volume”, click Allow. The drive is served from this Mac over a private connection that never leaves it."_s);
    const auto mountFailed = worded(
        setupRows(State::Pass, State::Fail, State::Pending, State::Pending), u"mount"_s,
        u"The drive could not be attached: permission denied"_s,
        u"If you clicked Don't Allow, open Privacy & Security › Files & Folders, turn on Network Volumes for Ferrobank, then click Try Again."_s);
    const auto done = worded(setupRows(State::Pass, State::Pass, State::Pass, State::Pass), u"cli"_s,
                             u"Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank."_s);
    const auto commandFailed =
        worded(setupRows(State::Pass, State::Pass, State::Pass, State::Fail), u"cli"_s,
               u"/usr/local/bin/ferrobank already exists and is not a link, so Ferrobank left it alone."_s,
               u"Choose Install Command-Line Tool… from the Ferrobank menu any time."_s);
    return {
        {u"onboarding-welcome"_s, Scene::Window::Main, {}, step(Screen::Welcome), {}},
        {u"onboarding-consent"_s, Scene::Window::Main, {}, step(Screen::Consent), {}},
        {u"onboarding-consent-no-command"_s,
         Scene::Window::Main,
         {},
         [](Stage& stage) {
             stage.model().setScreen(Screen::onboarding(Screen::Consent));
             stage.model().setChoices({true, false});
         },
         {}},
        {u"onboarding-setup-running"_s, Scene::Window::Main, {}, setup(running), {}},
        {u"onboarding-setup-approval"_s,
         Scene::Window::Main,
         [](Stage& stage) { stage.seam.registry.agent.status = LoginServiceStatus::RequiresApproval; },
         setup(approval),
         {}},
        {u"onboarding-setup-permission"_s, Scene::Window::Main, {}, setup(permission), {}},
        {u"onboarding-setup-mount-failed"_s, Scene::Window::Main, {}, setup(mountFailed), {}},
        {u"onboarding-setup-done"_s, Scene::Window::Main, {}, setup(done), {}},
        {u"onboarding-setup-command-failed"_s, Scene::Window::Main, {}, setup(commandFailed), {}},
        {u"onboarding-verify-running"_s,
         Scene::Window::Main,
         with(usualStatus()),
         [](Stage& stage) {
             stage.model().setScreen(Screen::onboarding(Screen::Verify));
             startChecks(stage);
         },
         {}},
        {u"onboarding-verify-failed"_s,
         Scene::Window::Main,
         {},
         on(Screen::onboarding(Screen::Verify), failingChecks()),
         {}},
        {u"onboarding-verify-passed"_s, Scene::Window::Main, {}, step(Screen::Verify), {}},
        {u"onboarding-done"_s, Scene::Window::Main, {}, step(Screen::Done), {}},
    };
}

std::vector<Scene> checksScenes()
{
    return {
        {u"checks-running"_s,
         Scene::Window::Main,
         with(usualStatus()),
         [](Stage& stage) {
             stage.model().setScreen(Screen::checks());
             startChecks(stage);
         },
         {}},
        {u"checks-passed"_s, Scene::Window::Main, {}, on(Screen::checks()), {}},
        {u"checks-failing"_s, Scene::Window::Main, {}, on(Screen::checks(), failingChecks()), {}},
        {u"checks-40"_s, Scene::Window::Main, {}, on(Screen::checks(), manyChecks()), {}},
    };
}

std::vector<Scene> uninstallScenes()
{
    const auto form = on(Screen::uninstall());
    return {
        {u"uninstall-form"_s, Scene::Window::Main, {}, form, {}},
        {u"uninstall-loses-files"_s,
         Scene::Window::Main,
         {},
         form,
         [](Stage& stage) {
             stage.root().uninstall()->setCopiesFiles(false);
             stage.root().uninstall()->setDeletesData(true);
         }},
        {u"uninstall-long-path"_s,
         Scene::Window::Main,
         {},
         form,
         [](Stage& stage) {
             stage.root().uninstall()->chooseFolder();
             stage.host.choosers.constLast()(longPath());
         }},
        {u"uninstall-failed"_s,
         Scene::Window::Main,
         {},
         uninstalled(FakeCLI::Answer::fails(u"The drive is in use by: git (4711), Terminal (812)."_s)),
         {}},
        {u"uninstall-running"_s,
         Scene::Window::Main,
         {},
         [](Stage& stage) {
             const QStringList args{u"uninstall"_s};
             stage.seam.cli.hold(args);
             stage.model().setScreen(Screen::uninstall());
             spawn(&stage.model(), stage.model().uninstall(std::nullopt, false));
         },
         {}},
        {u"uninstall-done"_s, Scene::Window::Main, {}, uninstalled(FakeCLI::Answer::text({})), {}},
        {u"uninstall-done-without-copy"_s,
         Scene::Window::Main,
         {},
         uninstalled(FakeCLI::Answer::text({})),
         [](Stage& stage) { stage.root().uninstall()->setCopiesFiles(false); }},
    };
}

std::vector<Scene> loginItemsScenes()
{
    return {
        {u"login-items"_s, Scene::Window::LoginItems, with(usualStatus()), {}, {}},
        {u"login-items-off"_s,
         Scene::Window::LoginItems,
         [](Stage& stage) {
             stage.seam.registry.agent.status = LoginServiceStatus::RequiresApproval;
             stage.seam.registry.mainApp.status = LoginServiceStatus::NotRegistered;
         },
         {},
         {}},
        {u"login-items-missing"_s,
         Scene::Window::LoginItems,
         [](Stage& stage) { stage.seam.registry.agent.status = LoginServiceStatus::NotFound; },
         {},
         {}},
    };
}

std::vector<Scene> otherScenes()
{
    return {{u"message"_s, Scene::Window::Message, {}, {}, {}},
            {u"update"_s, Scene::Window::Update, {}, {}, {}}};
}

} // namespace

Message offlineMessage()
{
    return {
        Message::Kind::Question,
        u"Ferrobank wants to add the ferrobank command to /usr/local/bin. You will be asked for your password."_s};
}

UpdatePrompt offlinePrompt()
{
    UpdatePrompt prompt;
    prompt.headline = u"A new version of Ferrobank is available"_s;
    prompt.text = u"Ferrobank 1.1.0 is now available; you have 1.0.0."_s;
    prompt.notes = u"• The dashboard opens faster.\n• Clones of large repositories are shared at once.\n"
                   "• The health checks name the program that holds the drive."_s;
    prompt.automaticTitle = u"Automatically download and install updates in the future"_s;
    prompt.buttons = {{UpdateAction::Install, u"Install Update"_s},
                      {UpdateAction::RemindLater, u"Remind Me Later"_s},
                      {UpdateAction::Skip, u"Skip This Version"_s}};
    prompt.dismiss = UpdateAction::RemindLater;
    return prompt;
}

const std::vector<OfflineScene>& offlineScenes()
{
    static const std::vector<OfflineScene> scenes = [] {
        std::vector<OfflineScene> all;
        for (const auto& part : {dashboardScenes(), onboardingScenes(), checksScenes(), uninstallScenes(),
                                 loginItemsScenes(), otherScenes()})
        {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }();
    return scenes;
}

QmlWindow& windowOf(Stage& stage, const OfflineScene& scene)
{
    switch (scene.window) {
    case OfflineScene::Window::Main:
        return stage.mainWindow();
    case OfflineScene::Window::LoginItems:
        return stage.loginItems();
    case OfflineScene::Window::Message:
        return stage.showMessage(offlineMessage());
    case OfflineScene::Window::Update:
        return stage.showUpdate(offlinePrompt());
    }
    return stage.mainWindow();
}

} // namespace ferrobank
