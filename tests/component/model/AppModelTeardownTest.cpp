#include "component/model/ModelTest.h"
#include "support/TestProgram.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ferrobank;

/// The model goes away in the middle of each wait. What is left ends once the collaborators go, or as soon as
/// what it waits for comes, and touches nothing: cleanup() fails on a lost coroutine, the address sanitizer
/// on a touched one.
class AppModelTeardownTest : public ModelTest {
    Q_OBJECT

private Q_SLOTS:

    void duringTheFirstStatus()
    {
        seam().cli.hold(FakeCLI::kStatus);
        start();
        destroyModel();
    }

    void duringTheFirstStatusThatThenComes()
    {
        seam().cli.hold(FakeCLI::kStatus);
        start();
        destroyModel();
        seam().cli.answerStatus(mountedStatus());
        QCOMPARE(seam().cli.calls().size(), 2);
        QCOMPARE(seam().clock.sleepers(), 0);
    }

    void whileThePollSleeps()
    {
        start();
        destroyModel();
        advance(5s);
        QCOMPARE(seam().cli.calls().size(), 2);
        QCOMPARE(seam().clock.sleepers(), 0);
    }

    void duringTheUpdateRestart()
    {
        DriveStatus status = mountedStatus();
        status.update_pending = true;
        seam().cli.answerStatus(status);
        seam().cli.hold(FakeCLI::kRestartKeepMounted);
        start();
        destroyModel();
        seam().cli.answer(FakeCLI::kRestartKeepMounted, FakeCLI::Answer::fails(u"late"_s));
    }

    void whileAnIconIsSet()
    {
        seam().workspace.iconsSet.shut();
        seam().cli.answerStatus(mountedStatus());
        start();
        destroyModel();
        seam().workspace.iconsSet.open();
        QCOMPARE(seam().clock.sleepers(), 0);
    }

    void duringAChecksRun()
    {
        start();
        seam().cli.holdLines();
        runChecks();
        destroyModel();
        seam().cli.pushLine(line(u"drive"_s, State::Pass));
        seam().cli.endLines();
    }

    void duringAChecksRunThatThenFails()
    {
        start();
        seam().cli.holdLines();
        runChecks();
        destroyModel();
        seam().cli.endLines(u"the pipe broke"_s);
    }

    void duringABreatherOfAFlood()
    {
        start();
        QStringList lines;
        for (int i = 0; i < 5'000; ++i) {
            lines.append(line(QString::number(i), State::Pass));
        }
        seam().cli.streamLines(lines);
        runChecks();
        QVERIFY(model().checks().size() < 5'000);
        destroyModel();
    }

    void duringTheClosingRefreshOfAChecksRun()
    {
        start();
        seam().cli.hold(FakeCLI::kStatus);
        runChecks();
        destroyModel();
        seam().cli.answerStatus(mountedStatus());
    }

    void duringARestart()
    {
        seam().registry.agent.status = LoginServiceStatus::Enabled;
        start();
        seam().cli.hold(FakeCLI::kRestart);
        fix(FixAction::Restart);
        destroyModel();
        seam().cli.answer(FakeCLI::kRestart, {});
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 0);
    }

    void duringTheWaitAfterARestart()
    {
        start();
        fix(FixAction::Restart);
        advance(3s);
        destroyModel();
        advance(60s);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 0);
    }

    void duringTheApprovalWait()
    {
        seam().registry.agent.registerError = "switched off";
        seam().registry.agent.statusAfterRegister = LoginServiceStatus::RequiresApproval;
        start();
        runSetup();
        destroyModel();
        seam().registry.agent.status = LoginServiceStatus::Enabled;
        advance(60s);
    }

    void duringTheRestartOfASetup()
    {
        seam().cli.answerStatus(attachErrorStatus(u"refused"_s));
        start();
        seam().cli.hold(FakeCLI::kRestart);
        runSetup();
        destroyModel();
    }

    void duringTheMountWait()
    {
        seam().cli.answerStatus(unmountedStatus());
        start();
        runSetup();
        advance(10s);
        destroyModel();
    }

    void duringTheLookOfAMountWait()
    {
        seam().cli.answerStatus(unmountedStatus());
        start();
        runSetup();
        seam().cli.hold(FakeCLI::kStatus);
        advance(1s);
        destroyModel();
        seam().cli.answerStatus(mountedStatus());
    }

    void duringTheFinderStep()
    {
        start();
        seam().cli.answerStatus(mountedStatus());
        seam().workspace.iconsSet.shut();
        runSetup();
        advance(1s);
        QCOMPARE(setupTask(u"finder"_s).state, State::Running);
        destroyModel();
        seam().workspace.iconsSet.open();
        letEventsIn();
        QVERIFY(!seam().commandLineTool.isInstalled());
    }

    void whileThePromptIsOpen()
    {
        seam().cli.answerStatus(mountedStatus());
        start();
        seam().removeLinkFolder();
        seam().privilegedLink.answered.shut();
        runSetup();
        QCOMPARE(setupTask(u"cli"_s).state, State::Running);
        destroyModel();
        seam().privilegedLink.outcome.kind = PrivilegedOutcome::Kind::Cancelled;
        seam().privilegedLink.answered.open();
    }

    void whileTheRegistryIsAsked_data()
    {
        QTest::addColumn<int>("what");
        QTest::newRow("start") << 0;
        QTest::newRow("poll") << 1;
        QTest::newRow("setup") << 2;
        QTest::newRow("restart") << 3;
        QTest::newRow("login setting") << 4;
    }

    void whileTheRegistryIsAsked()
    {
        QFETCH(const int, what);
        seam().finishSetup();
        if (what == 0) {
            seam().registryWork.hold();
        }
        start();
        seam().registryWork.hold();
        switch (what) {
        case 1:
            advance(5s);
            break;
        case 2:
            runSetup();
            break;
        case 3:
            fix(FixAction::Restart);
            break;
        case 4:
            model().setMenuOpensAtLogin(true);
            break;
        default:
            break;
        }
        QVERIFY(seam().registryWork.waiting() > 0);
        const int status = seam().cli.callsOf(FakeCLI::kStatus);
        destroyModel();
        seam().registryWork.letGo();
        advance(60s);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kRestart), 0);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kStatus), status);
    }

    void duringTheFirstQuestionOfASetup()
    {
        start();
        seam().volumes.answered.shut();
        runSetup();
        destroyModel();
        seam().forgetCalls();
        seam().volumes.answered.open();
        letEventsIn();
        advance(60s);
        QCOMPARE(seam().cli.calls(), QList<QStringList>());
        QCOMPARE(seam().registry.calls, QStringList());
        QCOMPARE(seam().clock.sleepers(), 0);
    }

    void betweenTheRegistrysAnswersToASetup_data()
    {
        QTest::addColumn<int>("answers");
        QTest::newRow("registration") << 0;
        QTest::newRow("approval") << 1;
        QTest::newRow("login choice") << 2;
    }

    void betweenTheRegistrysAnswersToASetup()
    {
        QFETCH(const int, answers);
        seam().cli.answerStatus(attachErrorStatus(u"refused"_s));
        start();
        seam().registryWork.hold();
        runSetup();
        for (int answer = 0; answer < answers; ++answer) {
            seam().registryWork.doNext();
        }
        QCOMPARE(seam().registryWork.waiting(), 1);
        destroyModel();
        seam().forgetCalls();
        seam().registryWork.letGo();
        letEventsIn();
        advance(60s);
        QCOMPARE(seam().cli.calls(), QList<QStringList>());
        QCOMPARE(seam().clock.sleepers(), 0);
    }

    void whileTheRegistryIsAskedUntilTheEnd()
    {
        seam().finishSetup();
        seam().registryWork.hold();
        start();
        runSetup();
        fix(FixAction::Restart);
        model().lookAtSetup();
        model().setMenuOpensAtLogin(true);
        destroyModel(); // and the queue goes with everything in it
    }

    void duringAnUninstall()
    {
        seam().finishSetup();
        start();
        const QStringList args{u"uninstall"_s};
        seam().cli.hold(args);
        spawn(&model(), model().uninstall({}, false));
        destroyModel();
        seam().cli.answer(args, {});
        QCOMPARE(seam().defaults.values.value(u"setupComplete"_s), true); // nothing is touched any more
    }
};

FERROBANK_TEST(AppModelTeardownTest)
#include "AppModelTeardownTest.moc"
