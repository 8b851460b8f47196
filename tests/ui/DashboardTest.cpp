#include "support/TestProgram.h"
#include "ui/WindowTest.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryFile>

using namespace Qt::StringLiterals;
using namespace ferrobank;
using State = CheckItem::State;

/// The dashboard.
class DashboardTest : public WindowTest {
    Q_OBJECT

private:
    void openWith(const DriveStatus& status)
    {
        stage().seam.finishSetup();
        stage().seam.cli.answerStatus(status);
        start();
        openWindow();
    }

    static DriveStatus statusOf(quint64 files, quint64 disk, quint64 saved)
    {
        DriveStatus status = mountedStatus();
        status.volume_used = files;
        status.store_bytes = disk;
        status.saved = saved;
        return status;
    }

    /// The width of the solid part of the savings bar and of the whole bar.
    std::pair<double, double> bar()
    {
        QQuickItem& whole = item(u"savingsBar"_s);
        return {item(u"solid"_s).width(), whole.width()};
    }

    void answerChecks(const QList<CheckItem>& rows)
    {
        QStringList lines;
        for (const CheckItem& row : rows) {
            lines << toJson(row);
        }
        stage().seam.cli.streamLines(lines);
    }

    static CheckItem check(const QString& id, State state, std::optional<QString> detail = {})
    {
        return {id, u"Title of "_s + id, state, std::move(detail), {}, {}};
    }

private Q_SLOTS:

    void aLoneSpinnerIsShownBeforeTheFirstStatus()
    {
        stage().seam.finishSetup();
        stage().seam.cli.hold(FakeCLI::kStatus);
        start();
        openWindow();
        QVERIFY(shows(u"statusSpinner"_s));
        QVERIFY(!shows(u"state"_s));
        QVERIFY(!shows(u"filesOnDrive"_s));
        QVERIFY(!shows(u"menuAtLogin"_s));
        QCOMPARE(stage().seam.cli.callsOf(FakeCLI::kCheck), 0);
        stage().seam.cli.answerStatus(mountedStatus());
        QTRY_VERIFY(shows(u"state"_s));
        QVERIFY(!shows(u"statusSpinner"_s));
    }

    void theHeaderTellsStateAndPlace()
    {
        openWith(mountedStatus());
        QVERIFY(texts().contains(u"Ferrobank"_s));
        QCOMPARE(textOf(u"state"_s), u"Mounted"_s);
        QCOMPARE(textOf(u"mountpoint"_s), u"~/Ferrobank"_s);
        QVERIFY(item(u"mountpoint"_s).property("selectByMouse").toBool());
    }

    void anUnmountedButInstalledDriveIsStarting()
    {
        openWith(unmountedStatus());
        QCOMPARE(textOf(u"state"_s), u"Starting…"_s);
        QCOMPARE(item(u"state"_s).property("symbol").toString(), u"clock.fill"_s);
        QCOMPARE(item(u"driveSize"_s).property("value").toString(), u"—"_s);
    }

    void anUnmountedDriveWithAnErrorNeedsAttentionAndSaysWhy()
    {
        openWith(attachErrorStatus(u"permission denied"_s));
        QCOMPARE(textOf(u"state"_s), u"Needs attention"_s);
        QCOMPARE(item(u"state"_s).property("symbol").toString(), u"exclamationmark.triangle.fill"_s);
        QCOMPARE(textOf(u"attachError"_s), u"permission denied"_s);
    }

    void aMountedDriveWithAnErrorIsMountedAndSaysNothing()
    {
        DriveStatus status = mountedStatus();
        status.attach_error = u"an old story"_s;
        openWith(status);
        QCOMPARE(textOf(u"state"_s), u"Mounted"_s);
        QCOMPARE(item(u"state"_s).property("symbol").toString(), u"checkmark.circle.fill"_s);
        QVERIFY(!shows(u"attachError"_s));
    }

    void aDriveThatIsNotInstalledIsNotSetUp()
    {
        DriveStatus status = unmountedStatus();
        status.installed = false;
        openWith(status);
        QCOMPARE(textOf(u"state"_s), u"Not set up"_s);
        QCOMPARE(item(u"state"_s).property("symbol").toString(), u"minus.circle.fill"_s);
    }

    void aFreshDriveHasNothingSavedHoweverMuchIsOnIt()
    {
        openWith(statusOf(900'000'000'000U, 800'000'000'000U, 0));
        QCOMPARE(textOf(u"nothingSaved"_s), u"Nothing saved yet"_s);
        QVERIFY(texts().contains(u"Clones and copies of the same files are stored once."_s));
        QVERIFY(!shows(u"savingsBar"_s));
        QVERIFY(!shows(u"saved"_s));
    }

    void nothingIsSavedWhileTheStoreIsUnknown()
    {
        DriveStatus status = mountedStatus();
        status.store_bytes.reset();
        openWith(status);
        QVERIFY(shows(u"nothingSaved"_s));
        QCOMPARE(item(u"storedOnDisk"_s).property("value").toString(), u"0 bytes"_s);
    }

    void theSavingIsToldInFigureBarAndSentence()
    {
        openWith(mountedStatus());
        QCOMPARE(textOf(u"saved"_s), u"7.5 GB"_s);
        QCOMPARE(textOf(u"savingSentence"_s), u"10 GB of files take 2.5 GB on disk, 4.0× smaller."_s);
        const auto [solid, whole] = bar();
        QCOMPARE(item(u"savingsBar"_s).height(), 10.0);
        QCOMPARE(solid, whole * 0.25);
    }

    void theBarIsFullWhenThereAreNoFiles()
    {
        openWith(statusOf(0, 5'000'000U, 1));
        const auto [solid, whole] = bar();
        QCOMPARE(solid, whole);
    }

    void theBarIsFullWhenTheStoreIsLargerThanTheFiles()
    {
        openWith(statusOf(48'000'000'000U, 60'000'000'000U, 1'000U));
        const auto [solid, whole] = bar();
        QCOMPARE(solid, whole);
        QCOMPARE(textOf(u"savingSentence"_s), u"48 GB of files take 60 GB on disk, 0.8× smaller."_s);
    }

    void aTinyShareStillDrawsEightPixels()
    {
        openWith(statusOf(8'000'000'000'000U, 1'000U, 1'000'000U));
        QCOMPARE(bar().first, 8.0);
    }

    void fourTilesStandSideBySideInOrder()
    {
        stage().seam.volumes.capacities.insert(FakeSeam::kHome, {500'000'000'000U, 212'400'000'000U});
        stage().seam.volumes.capacities.insert(FakeSeam::kMountpoint, {8'000'000'000'000U, 1U});
        openWith(mountedStatus());
        const QStringList names{u"filesOnDrive"_s, u"storedOnDisk"_s, u"freeOnThisMac"_s, u"driveSize"_s};
        QStringList told;
        double left = -1;
        for (const QString& name : names) {
            const QQuickItem& tile = item(name);
            QVERIFY(tile.x() > left);
            left = tile.x();
            told << tile.property("label").toString() + u": "_s + tile.property("value").toString();
        }
        QCOMPARE(told, (QStringList{u"Files on drive: 10 GB"_s, u"Stored on disk: 2.5 GB"_s,
                                    u"Free on this Mac: 212.4 GB"_s, u"Drive size: 8 TB"_s}));
    }

    void unknownCapacitiesAreDashes()
    {
        openWith(mountedStatus());
        QCOMPARE(item(u"freeOnThisMac"_s).property("value").toString(), u"—"_s);
        QCOMPARE(item(u"driveSize"_s).property("value").toString(), u"—"_s);
    }

    void capacitiesAreReadAgainWithEveryStatus()
    {
        stage().seam.volumes.capacities.insert(FakeSeam::kHome, {{}, 100'000'000'000U});
        openWith(mountedStatus());
        QCOMPARE(item(u"freeOnThisMac"_s).property("value").toString(), u"100 GB"_s);
        stage().seam.volumes.capacities.insert(FakeSeam::kHome, {{}, 99'000'000'000U});
        stage().seam.clock.advance(std::chrono::seconds(5));
        QTRY_COMPARE(item(u"freeOnThisMac"_s).property("value").toString(), u"99 GB"_s);
    }

    void checksRunWhenTheDashboardAppearsWithoutResults()
    {
        answerChecks({check(u"running"_s, State::Pass)});
        openWith(mountedStatus());
        QTRY_COMPARE(textOf(u"healthText"_s), u"1 of 4 checks passed"_s);
        QCOMPARE(stage().seam.cli.callsOf(FakeCLI::kCheck), 1);
    }

    void checksDoNotRunAgainWhenThereAreResults()
    {
        stage().seam.finishSetup();
        stage().seam.cli.answerStatus(mountedStatus());
        start();
        model().checkRows()->replaceAll({check(u"one"_s, State::Pass)});
        openWindow();
        QCOMPARE(textOf(u"healthText"_s), u"1 of 1 checks passed"_s);
        QCOMPARE(stage().seam.cli.callsOf(FakeCLI::kCheck), 0);
    }

    void runningChecksSpinAndPassedOnesCount()
    {
        stage().seam.cli.holdLines();
        openWith(mountedStatus());
        QCOMPARE(textOf(u"healthText"_s), u"Running checks…"_s);
        QVERIFY(shows(u"healthSpinner"_s));
        QVERIFY(!shows(u"healthSymbol"_s));
        for (const QString& id : {u"running"_s, u"drive"_s, u"login"_s, u"space"_s}) {
            stage().seam.cli.pushLine(toJson(check(id, State::Pass)));
        }
        stage().seam.cli.endLines();
        QTRY_COMPARE(textOf(u"healthText"_s), u"4 of 4 checks passed"_s);
        QVERIFY(!shows(u"healthSpinner"_s));
        QCOMPARE(item(u"healthSymbol"_s).property("name").toString(), u"checkmark.circle.fill"_s);
        QVERIFY(!shows(u"healthNote"_s));
    }

    void theFirstFailureIsExplained()
    {
        answerChecks({check(u"running"_s, State::Pass), check(u"drive"_s, State::Fail, u"It is read-only."_s),
                      check(u"login"_s, State::Fail, u"Never seen."_s), check(u"space"_s, State::Pass)});
        openWith(mountedStatus());
        QTRY_COMPARE(textOf(u"healthText"_s), u"2 of 4 checks passed"_s);
        QCOMPARE(item(u"healthSymbol"_s).property("name").toString(), u"exclamationmark.triangle.fill"_s);
        QCOMPARE(textOf(u"healthNote"_s), u"It is read-only."_s);
    }

    void aFailureWithoutDetailIsNamedByItsTitle()
    {
        answerChecks({check(u"drive"_s, State::Fail)});
        openWith(mountedStatus());
        QTRY_COMPARE(textOf(u"healthNote"_s), u"Title of drive"_s);
    }

    void runChecksGoesToTheChecksAndStartsThem()
    {
        openWith(mountedStatus());
        const int before = stage().seam.cli.callsOf(FakeCLI::kCheck);
        click(u"runChecks"_s);
        QCOMPARE(model().screen(), Screen::checks());
        QCOMPARE(stage().seam.cli.callsOf(FakeCLI::kCheck), before + 1);
    }

    void showInFinderOpensTheDrive()
    {
        openWith(mountedStatus());
        click(u"showInFinder"_s);
        QCOMPARE(stage().seam.workspace.openedPaths, QStringList{FakeSeam::kMountpoint});
    }

    void emptyPathsOpenNothing()
    {
        DriveStatus status = mountedStatus();
        status.mountpoint.clear();
        status.log.clear();
        openWith(status);
        click(u"showInFinder"_s);
        click(u"showLog"_s);
        QVERIFY(stage().seam.workspace.openedPaths.isEmpty());
        QVERIFY(stage().host.alerts.isEmpty());
    }

    void showLogOpensTheLog()
    {
        QTemporaryFile log;
        QVERIFY(log.open());
        DriveStatus status = mountedStatus();
        status.log = log.fileName();
        openWith(status);
        click(u"showLog"_s);
        QCOMPARE(stage().seam.workspace.openedPaths, QStringList{log.fileName()});
        QVERIFY(!shows(u"logNote"_s));
    }

    void aLogThatIsNotThereIsToldBesideTheButton()
    {
        DriveStatus status = mountedStatus();
        status.log = u"/nowhere/ferrobank.log"_s;
        openWith(status);
        click(u"showLog"_s);
        QCOMPARE(textOf(u"logNote"_s), u"There is no log yet."_s);
        QVERIFY(stage().seam.workspace.openedPaths.isEmpty());
        QVERIFY(stage().host.alerts.isEmpty());
    }

    void theMenuToggleFollowsAndChangesTheSetting()
    {
        openWith(mountedStatus());
        QVERIFY(!item(u"menuAtLogin"_s).property("checked").toBool());
        click(u"menuAtLogin"_s);
        QVERIFY(model().menuOpensAtLogin());
        QVERIFY(stage().seam.registry.calls.contains(u"register login item"_s));
        model().setMenuOpensAtLogin(false);
        QVERIFY(!item(u"menuAtLogin"_s).property("checked").toBool());
    }

    void theMenuToggleGoesBackWhenTheSystemRefuses()
    {
        stage().seam.registry.mainApp.registerError = "no";
        stage().seam.registry.mainApp.statusAfterRegister = LoginServiceStatus::NotRegistered;
        openWith(mountedStatus());
        click(u"menuAtLogin"_s);
        stage().seam.clock.advance(std::chrono::seconds(5));
        QTRY_VERIFY(!item(u"menuAtLogin"_s).property("checked").toBool());
    }

    void theCommandIsInstalledAndItsPathShown()
    {
        openWith(mountedStatus());
        QVERIFY(!shows(u"cliLink"_s));
        click(u"install"_s);
        QTRY_VERIFY(shows(u"cliLink"_s));
        QCOMPARE(textOf(u"cliLink"_s), stage().seam.commandLineTool.link());
        QVERIFY(!shows(u"install"_s));
        QVERIFY(stage().host.alerts.isEmpty());
    }

    void aCancelledInstallSaysNothing()
    {
        stage().seam.removeLinkFolder();
        stage().seam.privilegedLink.outcome = {PrivilegedOutcome::Kind::Cancelled, {}};
        openWith(mountedStatus());
        click(u"install"_s);
        QTRY_COMPARE(stage().seam.privilegedLink.requests.size(), 1);
        QVERIFY(stage().host.alerts.isEmpty());
        QVERIFY(shows(u"install"_s));
    }

    void aFailedInstallIsAnAlert()
    {
        stage().seam.removeLinkFolder();
        stage().seam.privilegedLink.outcome = {PrivilegedOutcome::Kind::Failed, u"The disk is full."_s};
        openWith(mountedStatus());
        click(u"install"_s);
        QTRY_COMPARE(stage().host.alerts, QStringList{u"The disk is full."_s});
        QVERIFY(shows(u"install"_s));
    }

    void installIsOfferedOnceAtATime()
    {
        stage().seam.removeLinkFolder();
        stage().seam.privilegedLink.answered.shut();
        openWith(mountedStatus());
        click(u"install"_s);
        QTRY_VERIFY(!item(u"install"_s).isEnabled());
        click(u"install"_s);
        QCOMPARE(stage().seam.privilegedLink.requests.size(), 1);
        stage().seam.privilegedLink.answered.open();
        QTRY_VERIFY(item(u"install"_s).isEnabled());
    }

    void aFailedInstallIsToldAlsoAfterTheWindowClosed()
    {
        stage().seam.removeLinkFolder();
        stage().seam.privilegedLink.answered.shut();
        stage().seam.privilegedLink.outcome = {PrivilegedOutcome::Kind::Failed, u"The disk is full."_s};
        openWith(mountedStatus());
        click(u"install"_s);
        stage().mainWindow().close();
        QTRY_COMPARE(stage().host.closings, 1);
        stage().seam.privilegedLink.answered.open();
        QTRY_COMPARE(stage().host.alerts, QStringList{u"The disk is full."_s});
    }

    void uninstallGoesToTheUninstallScreen()
    {
        openWith(mountedStatus());
        click(u"uninstall"_s);
        QCOMPARE(model().screen(), Screen::uninstall());
    }

    void anEqualStatusRedrawsNothing()
    {
        openWith(mountedStatus());
        int changes = 0;
        connect(stage().root().dashboard(), &DashboardPresenter::figuresChanged, this, [&] { ++changes; });
        int reads = 0;
        connect(&model(), &AppModel::statusChanged, this, [&] { ++reads; });
        stage().seam.clock.advance(std::chrono::seconds(20));
        QTRY_VERIFY(reads >= 4);
        QCOMPARE(changes, 0);
    }

    void everyControlIsReachedByTab()
    {
        openWith(mountedStatus());
        QStringList visited;
        for (int step = 0; step < 9; ++step) {
            press(Qt::Key_Tab);
            visited << focused();
        }
        for (const QString& name : {u"showInFinder"_s, u"runChecks"_s, u"menuAtLogin"_s, u"install"_s,
                                    u"showLog"_s, u"uninstall"_s, u"minimise"_s, u"close"_s})
        {
            QVERIFY2(visited.contains(name), qPrintable(name + u" is not in "_s + visited.join(u' ')));
        }
    }

    void returnPressesTheFocusedButtonWhereNoneIsTheDefault()
    {
        openWith(mountedStatus());
        item(u"showInFinder"_s).forceActiveFocus(Qt::TabFocusReason);
        press(Qt::Key_Return);
        QCOMPARE(stage().seam.workspace.openedPaths, QStringList{FakeSeam::kMountpoint});
    }
};

FERROBANK_TEST_WITH_WINDOWS(DashboardTest)
#include "DashboardTest.moc"
