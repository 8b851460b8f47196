#include "component/model/ModelTest.h"
#include "support/TestProgram.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ferrobank;

/// The four remedies, and the limit of the restart's wait.
class AppModelFixTest : public ModelTest {
    Q_OBJECT

private Q_SLOTS:

    void loginItemsOnlyOpensThePage()
    {
        start();
        fix(FixAction::LoginItems);
        QCOMPARE(seam().registry.calls, QStringList{u"open settings"_s});
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 0);
        QVERIFY(isIdle());
    }

    void privacySettingsOpensThatPage()
    {
        start();
        fix(FixAction::PrivacySettings);
        QCOMPARE(seam().settingsPages.opened, QList{SettingsPage::FilesAndFolders});
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 0);
        QVERIFY(isIdle());
    }

    void storageSettingsOpensThatPage()
    {
        start();
        fix(FixAction::StorageSettings);
        QCOMPARE(seam().settingsPages.opened, QList{SettingsPage::Storage});
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 0);
        QVERIFY(isIdle());
    }

    void settingsPagesOpenBesideAHangingPollAndARunningCheck()
    {
        start();
        seam().cli.holdLines();
        runChecks();
        seam().cli.hold(FakeCLI::kStatus);
        advance(5s);
        fix(FixAction::LoginItems);
        fix(FixAction::PrivacySettings);
        fix(FixAction::StorageSettings);
        QCOMPARE(seam().registry.calls, QStringList{u"open settings"_s});
        QCOMPARE(seam().settingsPages.opened, (QList{SettingsPage::FilesAndFolders, SettingsPage::Storage}));
        QVERIFY(model().checksRunning());
    }

    void restartRunsTheToolWaitsForTheMountAndRunsTheChecks()
    {
        enableAgent();
        start();
        fix(FixAction::Restart);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kRestart), 1);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 0);
        seam().cli.answerStatus(mountedStatus());
        advance(999ms);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 0);
        advance(1ms);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 1);
        QVERIFY(isIdle());
        QVERIFY(!seam().registry.calls.contains(u"register agent"_s));
    }

    void restartShowsInTheRunningRow()
    {
        enableAgent();
        start();
        failTheRunningRow();
        seam().cli.hold(FakeCLI::kRestart);
        QSignalSpy told(&model(), &AppModel::checksChanged);
        fix(FixAction::Restart);
        CheckItem expected = row(u"running"_s, State::Running, u"Restarting Ferrobank…"_s);
        expected.action = FixAction::Restart; // title and action stay, the advice goes
        QCOMPARE(model().checks().constFirst(), expected);
        QCOMPARE(told.count(), 1);
    }

    void restartWithoutARunningRowChangesNoRow()
    {
        enableAgent();
        start();
        seam().cli.hold(FakeCLI::kRestart);
        fix(FixAction::Restart);
        QVERIFY(model().checks().isEmpty());
        QCOMPARE(seam().cli.waiting(FakeCLI::kRestart), 1);
    }

    void otherRowsStayWhenThereIsNoRunningRow()
    {
        enableAgent();
        start();
        seam().cli.streamLines({line(u"drive"_s, State::Pass), line(u"space"_s, State::Fail)});
        runChecks();
        seam().cli.hold(FakeCLI::kRestart);
        model().checkRows()->replaceAll({row(u"drive"_s, State::Pass), row(u"space"_s, State::Fail)});
        fix(FixAction::Restart);
        QCOMPARE(model().checks(), (QList{row(u"drive"_s, State::Pass), row(u"space"_s, State::Fail)}));
    }

    void otherRowsStayBesideTheRunningRow()
    {
        enableAgent();
        start();
        seam().cli.streamLines({line(u"running"_s, State::Fail), line(u"drive"_s, State::Fail)});
        runChecks();
        const QList<CheckItem> before = model().checks();
        seam().cli.hold(FakeCLI::kRestart);
        fix(FixAction::Restart);
        QCOMPARE(model().checks().sliced(1), before.sliced(1));
    }

    void restartRegistersAnAgentThatIsNotEnabled_data()
    {
        QTest::addColumn<LoginServiceStatus>("status");
        QTest::newRow("not registered") << LoginServiceStatus::NotRegistered;
        QTest::newRow("switched off") << LoginServiceStatus::RequiresApproval;
        QTest::newRow("not found") << LoginServiceStatus::NotFound;
    }

    void restartRegistersAnAgentThatIsNotEnabled()
    {
        QFETCH(const LoginServiceStatus, status);
        seam().registry.agent.status = status;
        start();
        fix(FixAction::Restart);
        QCOMPARE(seam().registry.calls, QStringList{u"register agent"_s});
        QCOMPARE(seam().cli.callsOf(FakeCLI::kRestart), 0);
        QCOMPARE(seam().registry.agent.lastSwitch, UserSwitch::Respect);
    }

    void restartBelievesWhatItKnewOfASilentManager_data()
    {
        QTest::addColumn<LoginServiceStatus>("before");
        QTest::addColumn<bool>("restarts");
        QTest::newRow("enabled") << LoginServiceStatus::Enabled << true;
        QTest::newRow("not registered") << LoginServiceStatus::NotRegistered << false;
        QTest::newRow("never answered") << kNoAnswer << true;
    }

    void restartBelievesWhatItKnewOfASilentManager()
    {
        QFETCH(const LoginServiceStatus, before);
        QFETCH(const bool, restarts);
        seam().finishSetup();
        seam().registry.agent.status = before;
        start();
        seam().registry.agent.status = kNoAnswer;
        fix(FixAction::Restart);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kRestart), restarts ? 1 : 0);
        QCOMPARE(seam().registry.calls.count(u"register agent"_s), restarts ? 0 : 1);
    }

    void restartAsksForTheAgentInTheBackground()
    {
        enableAgent();
        start();
        seam().registryWork.hold();
        fix(FixAction::Restart);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kRestart), 0);
        seam().registryWork.letGo();
        QCOMPARE(seam().cli.callsOf(FakeCLI::kRestart), 1);
    }

    void limitIsCountedFromTheEndOfTheRestart()
    {
        enableAgent();
        seam().cli.answerStatus(unmountedStatus());
        start();
        seam().cli.hold(FakeCLI::kRestart);
        fix(FixAction::Restart);
        advance(29s); // the restart takes this long
        seam().cli.finish(FakeCLI::kRestart, {});
        advance(29s);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 0);
        advance(1s);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 1);
    }

    void failedRegistrationIsIgnored()
    {
        seam().registry.agent.registerError = "the user manager does not answer";
        start();
        fix(FixAction::Restart);
        seam().cli.answerStatus(mountedStatus());
        advance(1s);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 1);
        QVERIFY(isIdle());
    }

    void failedRestartIsIgnored_data()
    {
        QTest::addColumn<bool>("missing");
        QTest::newRow("tool fails") << false;
        QTest::newRow("tool is missing") << true;
    }

    void failedRestartIsIgnored()
    {
        QFETCH(const bool, missing);
        enableAgent();
        start();
        seam().cli.answer(FakeCLI::kRestart,
                          missing ? FakeCLI::Answer::missing() : FakeCLI::Answer::fails(u"volume busy"_s));
        fix(FixAction::Restart);
        seam().cli.answerStatus(mountedStatus());
        advance(1s);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 1);
        QVERIFY(isIdle());
    }

    void restartLooksOnceASecond()
    {
        enableAgent();
        start();
        advance(4s); // the next poll comes a second into the fix
        seam().forgetCalls();
        fix(FixAction::Restart);
        advance(4s);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kStatus), 4 + 1);
        QCOMPARE(seam().clock.sleeps(), QList<VirtualClock::Milliseconds>({1s, 5s, 1s, 1s, 1s, 1s}));
    }

    void restartGivesUpByTheWallClock_data()
    {
        QTest::addColumn<int>("jump"); // milliseconds, right after the beginning
        QTest::addColumn<int>("looks");
        QTest::newRow("just below the limit after 30 s") << -1 << 31;
        QTest::newRow("at the limit after 30 s") << 0 << 30;
        QTest::newRow("just above the limit after 30 s") << 1 << 30;
        QTest::newRow("just above the limit after 29 s") << 1001 << 29;
        QTest::newRow("at the limit after 29 s") << 1000 << 29;
        QTest::newRow("just below the limit after 29 s") << 999 << 30;
        QTest::newRow("an hour forward") << 3'600'000 << 1;
        QTest::newRow("a minute back") << -60'000 << 90;
    }

    void restartGivesUpByTheWallClock()
    {
        QFETCH(const int, jump);
        QFETCH(const int, looks);
        enableAgent();
        seam().cli.answerStatus(unmountedStatus());
        start();
        fix(FixAction::Restart);
        seam().clock.jumpWall(VirtualClock::Milliseconds(jump));
        int seconds = 0;
        while (seam().cli.callsOf(FakeCLI::kCheck) == 0 && seconds < 1000) {
            advance(1s);
            ++seconds;
        }
        QCOMPARE(seconds, looks);
        QVERIFY(isIdle());
    }

    void aMountSeenAfterTheLimitStillEndsInTheChecks()
    {
        enableAgent();
        start();
        fix(FixAction::Restart);
        seam().cli.hold(FakeCLI::kStatus);
        advance(1s);
        seam().clock.jumpWall(10min);
        seam().cli.answerStatus(mountedStatus());
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 1);
        QVERIFY(isIdle());
    }

    void mountSeenByThePollEndsTheWaitAtTheNextLook()
    {
        enableAgent();
        start();
        fix(FixAction::Restart);
        advance(500ms);
        seam().cli.answerStatus(mountedStatus());
        spawn(&model(), model().refresh());
        seam().cli.answer(FakeCLI::kStatus, FakeCLI::Answer::missing());
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 0);
        advance(500ms);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 1);
    }

    void restartDuringARunningCheckDoesNotStartAnother()
    {
        enableAgent();
        seam().cli.answerStatus(mountedStatus());
        start();
        seam().cli.holdLines();
        runChecks();
        fix(FixAction::Restart);
        advance(1s);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 1);
        seam().cli.endLines();
        QVERIFY(!model().checksRunning());
        QVERIFY(isIdle());
    }

    void twoRestartsAtOnceBothEnd()
    {
        enableAgent();
        seam().cli.answerStatus(mountedStatus());
        start();
        fix(FixAction::Restart);
        fix(FixAction::Restart);
        advance(1s);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kRestart), 2);
        QVERIFY(isIdle());
        QVERIFY(!model().checksRunning());
    }

private:
    void enableAgent() { seam().registry.agent.status = LoginServiceStatus::Enabled; }

    void failTheRunningRow()
    {
        CheckItem failed = row(u"running"_s, State::Fail, u"It does not answer."_s);
        failed.fix = u"Restart it."_s;
        failed.action = FixAction::Restart;
        seam().cli.streamLines({toJson(failed)});
        runChecks();
    }
};

FERROBANK_TEST(AppModelFixTest)
#include "AppModelFixTest.moc"
