#include "Ferrobank/FerrobankApp/TrayMenu.h"

#include "Platform/StatusItem.h"
#include "Platform/SystemChanges.h"
#include "support/TestProgram.h"
#include "support/fakes/FakeSeam.h"

#include <QtCore/QFile>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <optional>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

/// A tray that notes what it is told.
class FakeStatusItem : public StatusItem {
public:
    QList<MenuEntry> entries;
    StatusItemFace face;
    int told = 0; ///< calls of any kind
    int menuChanges = 0;
    int faceChanges = 0;
    int repeats = 0;

    void setFace(const StatusItemFace& newFace) override
    {
        ++told;
        faceChanges += newFace == face ? 0 : 1;
        face = newFace;
    }

    void setMenu(const QList<MenuEntry>& newEntries) override
    {
        ++told;
        menuChanges += newEntries == entries ? 0 : 1;
        entries = newEntries;
    }

    void repeatMenu() override { ++repeats; }

    [[nodiscard]] std::optional<MenuEntry> find(MenuItem item) const
    {
        for (const MenuEntry& entry : entries) {
            if (entry.id == static_cast<int>(item)) {
                return entry;
            }
        }
        return std::nullopt;
    }

    void click(MenuItem item, const QString& token = {}) { Q_EMIT chosen(static_cast<int>(item), token); }
};

/// The menu over a model on fakes, with everything that it may ask for noted.
struct Bench {
    explicit Bench(FakeSeam& on) : seam(on), model(on.collaborators()) {}

    TrayMenuCollaborators collaborators()
    {
        return {.model = model,
                .commandLineTool = seam.commandLineTool,
                .workspace = seam.workspace,
                .item = item,
                .systemChanges = systemChanges,
                .openWindow = [this](const QString& token) { opened << token; },
                .checkForUpdates = [this] { ++updateChecks; },
                .showAlert = [this](const QString& text) { alerts << text; },
                .quit = [this] { ++quits; }};
    }

    FakeSeam& seam;
    AppModel model;
    FakeStatusItem item;
    SystemChanges systemChanges;
    QStringList opened;
    QStringList alerts;
    int updateChecks = 0;
    int quits = 0;
    TrayMenu menu{collaborators()};
};

} // namespace

class TrayMenuTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void menuOfAnUnfinishedSetupIsThereAtOnce()
    {
        FakeSeam seam;
        Bench bench(seam);
        QVERIFY(bench.item.find(MenuItem::SetUp));
        QVERIFY(!bench.item.find(MenuItem::Open));
        QVERIFY(!bench.item.find(MenuItem::State));
    }

    void statusBringsItsLinesAndTheLog()
    {
        FakeSeam seam;
        seam.cli.answerStatus(mountedStatus());
        Bench bench(seam);
        QTRY_VERIFY(bench.item.find(MenuItem::State));
        QVERIFY(bench.item.find(MenuItem::Usage));
        QVERIFY(bench.item.find(MenuItem::ShowLog));
    }

    void equalStatusTellsTheTrayNothing()
    {
        FakeSeam seam;
        seam.cli.answerStatus(mountedStatus());
        Bench bench(seam);
        QTRY_VERIFY(bench.item.find(MenuItem::State));
        const int told = bench.item.told;
        QSignalSpy polls(&bench.model, &AppModel::statusChanged);
        seam.clock.advance(std::chrono::seconds(20));
        QTRY_VERIFY(polls.count() >= 2);
        QCOMPARE(bench.item.told, told);
    }

    void pollsDoNotAskTheRegistryForTheAgent()
    {
        FakeSeam seam;
        seam.finishSetup();
        seam.cli.answerStatus(mountedStatus());
        Bench bench(seam);
        QTRY_VERIFY(bench.item.find(MenuItem::State));
        const int reads = seam.registry.agent.statusReads;
        QSignalSpy polls(&bench.model, &AppModel::statusChanged);
        seam.clock.advance(std::chrono::seconds(60));
        QTRY_VERIFY(polls.count() >= 5);
        QCOMPARE(seam.registry.agent.statusReads, reads);
    }

    void commandLinkIsLookedAtWhenTheSystemTellsAndNotAtEachPoll()
    {
        FakeSeam seam;
        seam.finishSetup();
        seam.cli.answerStatus(mountedStatus());
        Bench bench(seam);
        QTRY_VERIFY(bench.item.find(MenuItem::State));
        QVERIFY(QFile::link(seam.cli.url(), seam.commandLineTool.link()));
        QSignalSpy polls(&bench.model, &AppModel::statusChanged);
        seam.clock.advance(std::chrono::seconds(5));
        QTRY_COMPARE(polls.count(), 1);
        QVERIFY(bench.item.find(MenuItem::InstallCommand));
        Q_EMIT bench.systemChanges.changed();
        QVERIFY(!bench.item.find(MenuItem::InstallCommand));
    }

    void agentRegisteredElsewhereIsSeenWhenTheSystemTells()
    {
        FakeSeam seam;
        seam.finishSetup();
        seam.registry.agent.status = LoginServiceStatus::NotRegistered;
        Bench bench(seam);
        QVERIFY(bench.item.find(MenuItem::SetUp));
        seam.registry.agent.status = LoginServiceStatus::Enabled;
        Q_EMIT bench.systemChanges.changed();
        QVERIFY(bench.item.find(MenuItem::Open));
        QVERIFY(!bench.item.find(MenuItem::SetUp));
    }

    void everythingIsReadAgainWhenTheMenuIsAboutToShow()
    {
        FakeSeam seam;
        seam.finishSetup();
        Bench bench(seam);
        QVERIFY(bench.item.find(MenuItem::InstallCommand));
        seam.registry.agent.status = LoginServiceStatus::RequiresApproval;
        QVERIFY(QFile::link(seam.cli.url(), seam.commandLineTool.link()));
        Q_EMIT bench.item.aboutToShowMenu();
        QVERIFY(bench.item.find(MenuItem::SetUp));
        QVERIFY(!bench.item.find(MenuItem::InstallCommand));
    }

    void openLeadsToTheDashboardFromAnyScreen()
    {
        FakeSeam seam;
        seam.finishSetup();
        Bench bench(seam);
        bench.model.setScreen(Screen::uninstall());
        bench.item.click(MenuItem::Open, u"token-1"_s);
        QVERIFY(bench.model.screen() == Screen::dashboard());
        QCOMPARE(bench.opened, QStringList{u"token-1"_s});
    }

    void screenThatIsThereAlreadyIsNotSetAgain()
    {
        FakeSeam seam;
        seam.finishSetup();
        Bench bench(seam);
        QSignalSpy changes(&bench.model, &AppModel::screenChanged);
        bench.item.click(MenuItem::Open);
        QCOMPARE(changes.count(), 0);
        QCOMPARE(bench.opened.size(), 1);
    }

    void setUpBeginsAnewFromALaterStep()
    {
        FakeSeam seam;
        Bench bench(seam);
        bench.model.setScreen(Screen::onboarding(Screen::Verify));
        bench.item.click(MenuItem::SetUp);
        QVERIFY(bench.model.screen() == Screen::onboarding(Screen::Welcome));
        QCOMPARE(bench.opened.size(), 1);
    }

    void runChecksShowsTheScreenAndRunsAtOnce()
    {
        FakeSeam seam;
        seam.finishSetup();
        seam.cli.holdLines();
        Bench bench(seam);
        bench.item.click(MenuItem::RunChecks);
        QVERIFY(bench.model.screen() == Screen::checks());
        QCOMPARE(bench.opened.size(), 1);
        QVERIFY(bench.model.checksRunning());
        seam.cli.endLines();
        QTRY_VERIFY(!bench.model.checksRunning());
    }

    void runChecksOnTheChecksScreenRunsAgain()
    {
        FakeSeam seam;
        seam.finishSetup();
        Bench bench(seam);
        bench.item.click(MenuItem::RunChecks);
        QTRY_VERIFY(!bench.model.checksRunning());
        const int runs = seam.cli.callsOf(FakeCLI::kCheck);
        bench.item.click(MenuItem::RunChecks);
        QTRY_COMPARE(seam.cli.callsOf(FakeCLI::kCheck), runs + 1);
    }

    void toggleRegistersAndUnregistersTheLoginItem()
    {
        FakeSeam seam;
        Bench bench(seam);
        bench.item.click(MenuItem::OpenAtLogin);
        QCOMPARE(seam.registry.mainApp.status, LoginServiceStatus::Enabled);
        QVERIFY(bench.item.find(MenuItem::OpenAtLogin)->checked);
        bench.item.click(MenuItem::OpenAtLogin);
        QCOMPARE(seam.registry.mainApp.status, LoginServiceStatus::NotRegistered);
        QVERIFY(!bench.item.find(MenuItem::OpenAtLogin)->checked);
    }

    void toggleIsToldAgainBecauseHostsFlipItThemselves()
    {
        FakeSeam seam;
        Bench bench(seam);
        bench.item.click(MenuItem::OpenAtLogin);
        QCOMPARE(bench.item.repeats, 1);
    }

    void showLogOpensThePathOfTheStatus()
    {
        FakeSeam seam;
        seam.cli.answerStatus(mountedStatus());
        Bench bench(seam);
        QTRY_VERIFY(bench.item.find(MenuItem::ShowLog));
        bench.item.click(MenuItem::ShowLog);
        QCOMPARE(seam.workspace.openedPaths, QStringList{mountedStatus().log});
    }

    void emptyLogPathOpensNothing()
    {
        FakeSeam seam;
        DriveStatus status = mountedStatus();
        status.log.clear();
        seam.cli.answerStatus(status);
        Bench bench(seam);
        QTRY_VERIFY(bench.item.find(MenuItem::ShowLog));
        bench.item.click(MenuItem::ShowLog);
        QVERIFY(seam.workspace.openedPaths.isEmpty());
        QVERIFY(bench.alerts.isEmpty());
    }

    void uninstallShowsItsScreen()
    {
        FakeSeam seam;
        seam.finishSetup();
        Bench bench(seam);
        bench.item.click(MenuItem::Uninstall);
        QVERIFY(bench.model.screen() == Screen::uninstall());
        QCOMPARE(bench.opened.size(), 1);
    }

    void updatesAndQuitReachTheirOperations()
    {
        FakeSeam seam;
        Bench bench(seam);
        bench.item.click(MenuItem::CheckForUpdates);
        bench.item.click(MenuItem::Quit);
        QCOMPARE(bench.updateChecks, 1);
        QCOMPARE(bench.quits, 1);
        QVERIFY(bench.opened.isEmpty());
    }

    void textsAndUnknownEntriesDoNothing()
    {
        FakeSeam seam;
        seam.cli.answerStatus(mountedStatus());
        Bench bench(seam);
        for (const int id : {1, 2, 3, 9, 0, -1, 99}) {
            Q_EMIT bench.item.chosen(id, {});
        }
        QVERIFY(bench.opened.isEmpty());
        QCOMPARE(bench.updateChecks + bench.quits, 0);
    }

    void whatTheMenuDoesNotOfferNowIsNotDoneForOthersEither()
    {
        FakeSeam seam;
        seam.finishSetup();
        QVERIFY(QFile::link(seam.cli.url(), seam.commandLineTool.link()));
        Bench bench(seam);
        const Screen before = bench.model.screen();
        QVERIFY(!bench.menu.choose(MenuItem::SetUp, {}));
        QVERIFY(!bench.menu.choose(MenuItem::InstallCommand, {}));
        QVERIFY(!bench.menu.choose(MenuItem::ShowLog, {}));
        QVERIFY(!bench.menu.choose(MenuItem::Divider, {}));
        QVERIFY(bench.model.screen() == before);
        QVERIFY(bench.opened.isEmpty());
        QVERIFY(bench.menu.choose(MenuItem::RunChecks, {}));
    }

    void openIsNotOfferedBeforeSetup()
    {
        FakeSeam seam;
        Bench bench(seam);
        const Screen before = bench.model.screen();
        QVERIFY(!bench.menu.choose(MenuItem::Open, {}));
        QVERIFY(bench.model.screen() == before);
        QVERIFY(bench.menu.choose(MenuItem::SetUp, {}));
    }

    void commandIsInstalledOnceHoweverOftenItIsAskedFor()
    {
        FakeSeam seam;
        seam.removeLinkFolder();
        seam.privilegedLink.answered.shut();
        Bench bench(seam);
        QVERIFY(bench.menu.choose(MenuItem::InstallCommand, {}));
        QVERIFY(bench.menu.choose(MenuItem::InstallCommand, {}));
        bench.item.click(MenuItem::InstallCommand);
        QCOMPARE(seam.privilegedLink.requests.size(), 1);
        seam.privilegedLink.outcome = {PrivilegedOutcome::Kind::Cancelled, {}};
        seam.privilegedLink.answered.open();
        seam.privilegedLink.answered.shut();
        QVERIFY(bench.menu.choose(MenuItem::InstallCommand, {}));
        QCOMPARE(seam.privilegedLink.requests.size(), 2);
        seam.privilegedLink.answered.open();
    }

    void installedCommandHidesItsEntry()
    {
        FakeSeam seam;
        Bench bench(seam);
        QVERIFY(bench.item.find(MenuItem::InstallCommand));
        bench.item.click(MenuItem::InstallCommand);
        QTRY_VERIFY(!bench.item.find(MenuItem::InstallCommand));
        QVERIFY(bench.alerts.isEmpty());
    }

    void cancelledCommandInstallSaysNothing()
    {
        FakeSeam seam;
        seam.removeLinkFolder();
        seam.privilegedLink.outcome = {PrivilegedOutcome::Kind::Cancelled, {}};
        Bench bench(seam);
        bench.item.click(MenuItem::InstallCommand);
        QTRY_COMPARE(seam.privilegedLink.requests.size(), 1);
        QVERIFY(bench.alerts.isEmpty());
        QVERIFY(bench.item.find(MenuItem::InstallCommand));
    }

    void menuThatGoesAwayDuringTheInstallTouchesNothing()
    {
        FakeSeam seam;
        auto bench = std::make_unique<Bench>(seam);
        auto menu = std::make_unique<TrayMenu>(bench->collaborators());
        seam.removeLinkFolder();
        seam.privilegedLink.answered.shut();
        seam.privilegedLink.outcome.kind = PrivilegedOutcome::Kind::Failed;
        menu->choose(MenuItem::InstallCommand, {});
        const int told = bench->item.told;
        menu.reset();
        QVERIFY(QFile::link(seam.cli.url(), seam.folder.filePath(u"other"_s)));
        seam.privilegedLink.answered.open();
        QCoreApplication::processEvents();
        QCOMPARE(bench->alerts, QStringList());
        QCOMPARE(bench->item.told, told);
    }

    void statesOfTheAgentAreAskedForInTheBackground()
    {
        FakeSeam seam;
        seam.finishSetup();
        Bench bench(seam);
        seam.registry.agent.status = LoginServiceStatus::RequiresApproval;
        seam.registryWork.hold();
        Q_EMIT bench.item.aboutToShowMenu();
        QVERIFY(bench.item.find(MenuItem::Open)); // what is known so far
        seam.registryWork.letGo();
        QVERIFY(bench.item.find(MenuItem::SetUp));
    }

    void silentServiceManagerKeepsTheMenuAsItIs()
    {
        FakeSeam seam;
        seam.finishSetup();
        Bench bench(seam);
        seam.registry.agent.status = kNoAnswer;
        const int told = bench.item.told;
        Q_EMIT bench.item.aboutToShowMenu();
        Q_EMIT bench.systemChanges.changed();
        QVERIFY(bench.item.find(MenuItem::Open));
        QCOMPARE(bench.item.told, told);
    }

    void failedCommandInstallIsAnAlertInItsOwnWords()
    {
        FakeSeam seam;
        seam.removeLinkFolder();
        seam.privilegedLink.outcome = {PrivilegedOutcome::Kind::Failed, u"No authentication agent found."_s};
        Bench bench(seam);
        bench.item.click(MenuItem::InstallCommand);
        QTRY_COMPARE(bench.alerts, QStringList{u"No authentication agent found."_s});
    }

    void attentionReachesTheFace()
    {
        FakeSeam seam;
        seam.cli.answerStatus(attachErrorStatus(u"The store is damaged."_s));
        Bench bench(seam);
        QTRY_VERIFY(bench.item.face.needsAttention);
        QCOMPARE(bench.item.face.toolTip, u"The store is damaged."_s);
    }
};

} // namespace ferrobank

FERROBANK_TEST(ferrobank::TrayMenuTest)
#include "TrayMenuTest.moc"
