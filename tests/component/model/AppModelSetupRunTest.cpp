#include "component/model/ModelTest.h"
#include "support/TestProgram.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ferrobank;

namespace {

constexpr auto kEnabled = LoginServiceStatus::Enabled;
constexpr auto kNeedsApproval = LoginServiceStatus::RequiresApproval;

const auto kStarting = u"Starting the drive."_s;
const auto kFormatting = u"Formatting an 8 TB volume. This takes a moment the first time."_s;
const auto kPermission =
    u"macOS is asking for your permission. In the dialog “Ferrobank would like to access files on a network volume”, click Allow. The drive is served from this Mac over a private connection that never leaves it."_s;
const auto kAttachAdvice =
    u"If you clicked Don't Allow, open Privacy & Security › Files & Folders, turn on Network Volumes for Ferrobank, then click Try Again."_s;

} // namespace

/// The setup run, step by step, with its limits.
class AppModelSetupRunTest : public ModelTest {
    Q_OBJECT

private Q_SLOTS:

    void mountedDrivePassesWithoutAnySleep()
    {
        seam().cli.answerStatus(mountedStatus());
        start();
        const auto sleeps = seam().clock.sleeps().size();
        const QSharedPointer<QStringList> details = watchDetails();
        runSetup();
        QCOMPARE(setupTasks(), u"login pass, mount pass, finder pass, cli pass"_s);
        QVERIFY(details->contains(kFormatting)); // only for that instant
        QCOMPARE(seam().clock.sleeps().size(), sleeps);
        QVERIFY(isIdle());
        QVERIFY(model().setupDone());
    }

    void everyStepShowsItsWords()
    {
        start();
        QList<CheckItem> told;
        connect(&model(), &AppModel::setupTasksChanged, &model(), [this, &told] {
            for (const CheckItem& each : model().setupTasks()) {
                if (each.state != State::Pending && !told.contains(each)) {
                    told.append(each);
                }
            }
        });
        runSetup();
        seam().cli.answerStatus(mountedStatus());
        advance(1s);
        const QList<CheckItem> expected{
            task(u"login"_s, State::Running, {}),
            task(u"login"_s, State::Pass,
                 u"Registered with macOS; it shows in System Settings › Login Items."_s),
            task(u"mount"_s, State::Running, kFormatting),
            task(u"mount"_s, State::Pass, u"Mounted at ~/Ferrobank."_s),
            task(u"finder"_s, State::Running, {}),
            task(u"finder"_s, State::Pass, u"In Finder's sidebar under Locations, with its own icon."_s),
            task(u"cli"_s, State::Running, {}),
            task(u"cli"_s, State::Pass,
                 u"Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank."_s),
        };
        QCOMPARE(told.size(), expected.size());
        for (qsizetype i = 0; i < told.size(); ++i) {
            QCOMPARE(told.at(i).detail.value_or(QString()), expected.at(i).detail.value_or(QString()));
            QCOMPARE(told.at(i), expected.at(i));
        }
    }

    void rowsBeginPendingAndFollowTheChoices()
    {
        start();
        setChoices(true, false);
        seam().cli.answerStatus(unmountedStatus());
        advance(5s);
        runSetup();
        QCOMPARE(setupTasks(), u"login pass, mount running, finder pending"_s);
    }

    void declinedCommandEndsTheRunAfterTheThirdRow()
    {
        seam().cli.answerStatus(mountedStatus());
        start();
        setChoices(true, false);
        runSetup();
        QCOMPARE(setupTasks(), u"login pass, mount pass, finder pass"_s);
        QVERIFY(!seam().commandLineTool.isInstalled());
        QVERIFY(isIdle());
    }

    void runNeverChangesScreenOrRecordOrChecks()
    {
        seam().cli.answerStatus(mountedStatus());
        start();
        runSetup();
        QCOMPARE(model().screen(), Screen::onboarding(Screen::Welcome));
        QVERIFY(seam().defaults.values.isEmpty());
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 0);
    }

    // Login item

    void failedRegistrationEndsTheRun()
    {
        seam().registry.agent.registerError = "The user manager does not answer.";
        seam().cli.answerStatus(mountedStatus());
        start();
        runSetup();
        QCOMPARE(setupTasks(), u"login fail, mount pending, finder pending, cli pending"_s);
        QCOMPARE(setupTask(u"login"_s).detail, u"The user manager does not answer."_s);
        QCOMPARE(setupTask(u"login"_s).fix,
                 u"Open System Settings › General › Login Items and turn on Ferrobank."_s);
        QVERIFY(!seam().registry.calls.contains(u"open settings"_s));
        QVERIFY(isIdle());
    }

    void missingApprovalOpensTheSettingsOnceAndWaits()
    {
        startUnapproved();
        runSetup();
        advance(1h);
        QCOMPARE(seam().registry.calls.count(u"open settings"_s), 1);
        const CheckItem login = setupTask(u"login"_s);
        QCOMPARE(login.state, State::Fail);
        QCOMPARE(login.detail, u"Ferrobank is switched off in Login Items."_s);
        QCOMPARE(
            login.fix,
            u"Turn on Ferrobank in the Login Items window that just opened; setup continues on its own."_s);
        QCOMPARE(setupTask(u"mount"_s).state, State::Pending);
    }

    void approvalLetsTheRunGoOnWithinASecond()
    {
        startUnapproved();
        runSetup();
        advance(10s);
        seam().registry.agent.status = kEnabled;
        advance(999ms);
        QCOMPARE(setupTask(u"login"_s).state, State::Fail);
        advance(1ms);
        QCOMPARE(setupTask(u"login"_s).state, State::Pass);
        QVERIFY(!setupTask(u"login"_s).fix);
        QCOMPARE(setupTask(u"mount"_s).state, State::Running);
    }

    void loginItemThatAwaitsApprovalHoldsUpTheRunToo()
    {
        seam().registry.mainApp.status = kNeedsApproval;
        start();
        runSetup();
        advance(3s);
        QCOMPARE(setupTask(u"login"_s).state, State::Fail);
        QCOMPARE(seam().registry.calls.count(u"open settings"_s), 1);
        seam().registry.mainApp.status = kEnabled;
        advance(1s);
        QCOMPARE(setupTask(u"login"_s).state, State::Pass);
    }

    void approvalWaitIsNotMovedByTheWallClock()
    {
        startUnapproved();
        runSetup();
        seam().clock.jumpWall(24h);
        advance(2s);
        seam().clock.jumpWall(-48h);
        advance(2s);
        QCOMPARE(setupTask(u"login"_s).state, State::Fail);
        seam().registry.agent.status = kEnabled;
        advance(1s);
        QCOMPARE(setupTask(u"login"_s).state, State::Pass);
    }

    void silenceDuringTheApprovalWaitIsNoApproval()
    {
        startUnapproved();
        runSetup();
        advance(2s);
        seam().registry.agent.status = kNoAnswer;
        advance(30s);
        QCOMPARE(setupTask(u"login"_s).state, State::Fail);
        QCOMPARE(setupTask(u"login"_s).detail, u"Ferrobank is switched off in Login Items."_s);
        seam().registry.agent.status = kEnabled;
        advance(1s);
        QCOMPARE(setupTask(u"login"_s).state, State::Pass);
    }

    void silenceRightAfterTheRegistrationIsNeitherPassNorFailure()
    {
        seam().registry.agent.statusAfterRegister = kNoAnswer;
        start();
        runSetup();
        advance(10s);
        QCOMPARE(setupTask(u"login"_s).state, State::Running);
        QVERIFY(!seam().registry.calls.contains(u"open settings"_s));
        seam().registry.agent.status = kNeedsApproval;
        advance(1s);
        QCOMPARE(setupTask(u"login"_s).state, State::Fail);
        QCOMPARE(seam().registry.calls.count(u"open settings"_s), 1);
        seam().registry.agent.status = kEnabled;
        advance(1s);
        QCOMPARE(setupTask(u"login"_s).state, State::Pass);
    }

    void registrationThatTakesItsTimeShowsAsRunningAndHoldsUpNothingElse()
    {
        start();
        seam().registryWork.hold();
        runSetup();
        QCOMPARE(setupTasks(), u"login running, mount pending, finder pending, cli pending"_s);
        QCOMPARE(seam().registry.calls, QStringList());
        QVERIFY(seam().registryWork.waiting() > 0);
        model().setScreen(Screen::onboarding(Screen::Setup));
        seam().registryWork.letGo();
        QCOMPARE(setupTask(u"login"_s).state, State::Pass);
        QCOMPARE(seam().registry.calls, (QStringList{u"register agent"_s, u"register login item"_s}));
    }

    void rowPassesOnlyOnceTheLoginChoiceIsCarriedOut()
    {
        start();
        seam().registryWork.hold();
        runSetup();
        seam().registryWork.doNext(); // the registration
        seam().registryWork.doNext(); // the approval
        QCOMPARE(setupTask(u"login"_s).state, State::Running);
        QVERIFY(model().menuOpensAtLogin());
        seam().registryWork.doNext(); // the choice
        QCOMPARE(seam().registry.mainApp.status, kEnabled);
        QCOMPARE(setupTask(u"login"_s).state, State::Pass);
        seam().registryWork.letGo();
    }

    void choiceIsAppliedWhereItDiffers_data()
    {
        QTest::addColumn<LoginServiceStatus>("status");
        QTest::addColumn<bool>("choice");
        QTest::addColumn<QString>("call");
        QTest::newRow("on, is off") << LoginServiceStatus::NotRegistered << true << u"register login item"_s;
        QTest::newRow("on, is on") << kEnabled << true << QString();
        QTest::newRow("off, is on") << kEnabled << false << u"unregister login item"_s;
        QTest::newRow("off, is off") << LoginServiceStatus::NotRegistered << false << QString();
    }

    void choiceIsAppliedWhereItDiffers()
    {
        QFETCH(const LoginServiceStatus, status);
        QFETCH(const bool, choice);
        QFETCH(const QString, call);
        seam().registry.mainApp.status = status;
        start();
        setChoices(choice, true);
        runSetup();
        QStringList expected{u"register agent"_s};
        if (!call.isEmpty()) {
            expected.append(call);
        }
        QCOMPARE(seam().registry.calls, expected);
        QCOMPARE(model().menuOpensAtLogin(), choice);
        QCOMPARE(setupTask(u"login"_s).state, State::Pass);
    }

    void failingLoginItemDoesNotFailTheRow()
    {
        seam().registry.mainApp.registerError = "the folder is read-only";
        start();
        runSetup();
        QCOMPARE(setupTask(u"login"_s).state, State::Pass);
    }

    void registryThatTakesHalfAMinuteOnlyDelays()
    {
        seam().cli.answerStatus(mountedStatus());
        start();
        seam().registry.meanwhile = [this] { seam().clock.jumpWall(30s); };
        runSetup();
        QVERIFY(model().setupDone());
    }

    // The drive

    void firstRunIsToldFromTheStoreAlone_data()
    {
        QTest::addColumn<bool>("storeExists");
        QTest::addColumn<bool>("recorded");
        QTest::addColumn<QString>("detail");
        QTest::newRow("no store") << false << false << kFormatting;
        QTest::newRow("no store, though setup is recorded") << false << true << kFormatting;
        QTest::newRow("store") << true << false << kStarting;
    }

    void firstRunIsToldFromTheStoreAlone()
    {
        QFETCH(const bool, storeExists);
        QFETCH(const bool, recorded);
        if (recorded) {
            seam().finishSetup();
        }
        if (storeExists) {
            seam().volumes.present.insert(FakeSeam::kStore);
        }
        start();
        runSetup();
        QTEST(setupTask(u"mount"_s).detail.value(), "detail");
        QCOMPARE(seam().volumes.existenceQuestions, QStringList{FakeSeam::kStore});
    }

    void aHomeThatDoesNotAnswerIsNoFirstRun()
    {
        seam().volumes.silent.insert(FakeSeam::kStore);
        start();
        runSetup();
        QCOMPARE(setupTask(u"mount"_s).detail, kStarting);
    }

    void staleAttachErrorFailsAtOnceAfterARestart()
    {
        seam().cli.answerStatus(attachErrorStatus(u"operation not permitted"_s));
        start();
        seam().forgetCalls();
        seam().cli.answerStatus(mountedStatus()); // what a refresh would find
        runSetup();
        QCOMPARE(seam().cli.calls(), QList<QStringList>{FakeCLI::kRestart});
        QCOMPARE(setupTasks(), u"login pass, mount fail, finder pending, cli pending"_s);
        QCOMPARE(setupTask(u"mount"_s).detail, u"The drive could not be attached: operation not permitted"_s);
        QCOMPARE(setupTask(u"mount"_s).fix, kAttachAdvice);
        QVERIFY(model().mountFailed());
        QVERIFY(isIdle());

        runSetup(); // "Try Again" repeats the restart
        QCOMPARE(seam().cli.callsOf(FakeCLI::kRestart), 2);
    }

    void staleAttachErrorIsForgottenWhenThePollRefreshesDuringTheRestart()
    {
        seam().cli.answerStatus(attachErrorStatus(u"operation not permitted"_s));
        start();
        seam().cli.hold(FakeCLI::kRestart);
        runSetup();
        QCOMPARE(setupTask(u"mount"_s).state, State::Pending);
        seam().cli.answerStatus(mountedStatus());
        advance(5s);
        seam().cli.finish(FakeCLI::kRestart, {});
        QCOMPARE(setupTask(u"mount"_s).state, State::Pass);
    }

    void failedRestartBeforeTheWaitIsIgnored()
    {
        seam().cli.answerStatus(attachErrorStatus(u"operation not permitted"_s));
        start();
        seam().cli.hold(FakeCLI::kRestart);
        runSetup();
        seam().cli.answerStatus(mountedStatus());
        advance(5s);
        seam().cli.answer(FakeCLI::kRestart, FakeCLI::Answer::fails(u"volume busy"_s));
        QVERIFY(model().setupDone());
    }

    void mountedDriveWithAnOldAttachErrorPasses()
    {
        DriveStatus status = mountedStatus();
        status.attach_error = u"once"_s;
        seam().cli.answerStatus(status);
        start();
        runSetup();
        QCOMPARE(seam().cli.callsOf(FakeCLI::kRestart), 1);
        QVERIFY(model().setupDone());
    }

    void attachErrorDuringTheWaitEndsTheRun()
    {
        seam().cli.answerStatus(unmountedStatus());
        start();
        runSetup();
        advance(2s);
        seam().cli.answerStatus(attachErrorStatus(u"50% of %1 refused"_s));
        advance(1s);
        QCOMPARE(setupTask(u"mount"_s).state, State::Fail);
        QCOMPARE(setupTask(u"mount"_s).detail, u"The drive could not be attached: 50% of %1 refused"_s);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kRestart), 0);
        QVERIFY(isIdle());
    }

    void permissionNoteComesInTheFirstLookLaterThanFourSeconds_data()
    {
        QTest::addColumn<int>("jump"); // milliseconds, right after the wait began
        QTest::addColumn<int>("second");
        QTest::newRow("exactly 4 s is not later") << 0 << 5;
        QTest::newRow("just below 4 s after 4 s") << -1 << 5;
        QTest::newRow("just above 4 s after 4 s") << 1 << 4;
        QTest::newRow("just above 4 s after 3 s") << 1001 << 3;
        QTest::newRow("exactly 4 s after 3 s") << 1000 << 4;
        QTest::newRow("an hour forward") << 3'600'000 << -1; // the limit comes first
        QTest::newRow("ten seconds back") << -10'000 << 15;
    }

    void permissionNoteComesInTheFirstLookLaterThanFourSeconds()
    {
        QFETCH(const int, jump);
        QFETCH(const int, second);
        seam().cli.answerStatus(unmountedStatus());
        start();
        runSetup();
        seam().clock.jumpWall(VirtualClock::Milliseconds(jump));
        int seconds = 0;
        while (setupTask(u"mount"_s).state == State::Running && seconds < 100) {
            advance(1s);
            ++seconds;
        }
        if (second < 0) {
            QCOMPARE(seconds, 1);
            QCOMPARE(setupTask(u"mount"_s).state, State::Fail);
        } else {
            QCOMPARE(seconds, second);
            QCOMPARE(setupTask(u"mount"_s).state, State::AwaitingUser);
            QCOMPARE(setupTask(u"mount"_s).detail, kPermission);
            QVERIFY(!setupTask(u"mount"_s).fix);
        }
    }

    void mountAfterExactlyFourSecondsShowsNoNote()
    {
        seam().cli.answerStatus(unmountedStatus());
        start();
        const QSharedPointer<QStringList> details = watchDetails();
        runSetup();
        advance(3s);
        seam().cli.answerStatus(mountedStatus());
        advance(1s);
        QVERIFY(model().setupDone());
        QVERIFY(!details->contains(kPermission));
    }

    void mountGivesUpMoreThanFiveMinutesLater_data()
    {
        QTest::addColumn<int>("jump"); // milliseconds, after 299 seconds
        QTest::addColumn<int>("second");
        QTest::newRow("exactly 300 s is not more") << 0 << 301;
        QTest::newRow("just below 300 s after 300 s") << -1 << 301;
        QTest::newRow("just above 300 s after 300 s") << 1 << 300;
        QTest::newRow("an hour forward") << 3'600'000 << 300;
        QTest::newRow("a minute back") << -60'000 << 361;
    }

    void mountGivesUpMoreThanFiveMinutesLater()
    {
        QFETCH(const int, jump);
        QFETCH(const int, second);
        seam().cli.answerStatus(unmountedStatus());
        start();
        runSetup();
        advance(299s);
        seam().clock.jumpWall(VirtualClock::Milliseconds(jump));
        int seconds = 299;
        while (setupTask(u"mount"_s).state != State::Fail && seconds < 1000) {
            advance(1s);
            ++seconds;
        }
        QCOMPARE(seconds, second);
        QCOMPARE(setupTask(u"mount"_s).detail, u"The drive did not mount within 5 minutes."_s);
        QCOMPARE(setupTask(u"mount"_s).fix,
                 u"Choose Show Log from the Ferrobank menu; the last lines name what blocked the mount."_s);
        QVERIFY(isIdle());
    }

    void mountIsToldInTheSameWordsForEveryMountPoint()
    {
        DriveStatus status = mountedStatus();
        status.mountpoint = u"/srv/elsewhere/Drive"_s;
        seam().cli.answerStatus(status);
        start();
        runSetup();
        QCOMPARE(setupTask(u"mount"_s).detail, u"Mounted at ~/Ferrobank."_s);
    }

    void mountWaitBeginsAfterTheRestartNotBeforeIt()
    {
        seam().cli.answerStatus(attachErrorStatus(u"operation not permitted"_s));
        start();
        seam().cli.hold(FakeCLI::kRestart);
        runSetup();
        seam().cli.answerStatus(unmountedStatus());
        advance(290s); // the restart takes this long, and the poll forgets the error meanwhile
        seam().cli.finish(FakeCLI::kRestart, {});
        QCOMPARE(setupTask(u"mount"_s).state, State::Running);
        advance(4s);
        QCOMPARE(setupTask(u"mount"_s).state, State::Running);
        advance(1s);
        QCOMPARE(setupTask(u"mount"_s).state, State::AwaitingUser);
        advance(295s);
        QCOMPARE(setupTask(u"mount"_s).state, State::AwaitingUser);
        advance(1s);
        QCOMPARE(setupTask(u"mount"_s).detail, u"The drive did not mount within 5 minutes."_s);
    }

    void attachErrorThatThePollBroughtDecidesTheWaitWithoutAnAnswerToItsOwnQuestion()
    {
        seam().cli.answerStatus(unmountedStatus());
        start();
        advance(4500ms);
        runSetup();
        seam().cli.answerStatus(attachErrorStatus(u"refused"_s));
        advance(500ms); // the poll
        seam().cli.answer(FakeCLI::kStatus, FakeCLI::Answer::missing());
        QCOMPARE(setupTask(u"mount"_s).state, State::Running);
        advance(500ms); // the run's own look
        QCOMPARE(setupTask(u"mount"_s).detail, u"The drive could not be attached: refused"_s);
        QVERIFY(isIdle());
    }

    void waitLooksAtTheStatusOnceASecond()
    {
        seam().cli.answerStatus(unmountedStatus());
        start();
        seam().forgetCalls();
        runSetup();
        advance(4s);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kStatus), 4);
        QCOMPARE(seam().clock.sleeps(), QList<VirtualClock::Milliseconds>({1s, 1s, 1s, 1s, 1s}));
    }

    void unreadableStatusGoesOnWaiting()
    {
        start();
        seam().cli.answer(FakeCLI::kStatus, FakeCLI::Answer::missing());
        runSetup();
        advance(100s);
        QCOMPARE(setupTask(u"mount"_s).state, State::AwaitingUser);
        seam().cli.answerStatus(mountedStatus());
        advance(1s);
        QVERIFY(model().setupDone());
    }

    void hangingToolHoldsUpTheWaitButNotTheApplication()
    {
        seam().cli.answerStatus(unmountedStatus());
        start();
        runSetup();
        seam().cli.hold(FakeCLI::kStatus);
        advance(1h);
        QCOMPARE(setupTask(u"mount"_s).state, State::Running);
        seam().cli.answerStatus(mountedStatus());
        QVERIFY(model().setupDone());
        QVERIFY(isIdle());
    }

    void mountSeenByThePollCountsAtTheNextLook()
    {
        seam().cli.answerStatus(unmountedStatus());
        start();
        advance(4500ms);
        runSetup();
        seam().cli.answerStatus(mountedStatus());
        advance(500ms); // the poll
        seam().cli.answer(FakeCLI::kStatus, FakeCLI::Answer::missing());
        QCOMPARE(setupTask(u"mount"_s).state, State::Running);
        advance(500ms); // the run's own look
        QVERIFY(model().setupDone());
    }

    // Finder and command

    void slowOrMissingIconStillPasses()
    {
        seam().cli.answerStatus(mountedStatus());
        seam().volumes.silent.insert(FakeSeam::kMountpoint + u"/.VolumeIcon.icns"_s);
        start();
        runSetup();
        QCOMPARE(setupTask(u"finder"_s).state, State::Pass);
        QVERIFY(seam().workspace.volumeIcons.isEmpty());
    }

    void finderRowRunsUntilTheIconIsSet()
    {
        seam().cli.answerStatus(mountedStatus());
        start();
        seam().volumes.present.clear();
        seam().workspace.iconsSet.shut();
        runSetup();
        QCOMPARE(setupTasks(), u"login pass, mount pass, finder running, cli pending"_s);
        seam().workspace.iconsSet.open();
        QCOMPARE(setupTask(u"finder"_s).state, State::Pass);
    }

    void failedCommandEndsTheRunAndCountsAsDone()
    {
        seam().cli.answerStatus(mountedStatus());
        start();
        seam().removeLinkFolder();
        seam().privilegedLink.outcome.kind = PrivilegedOutcome::Kind::Failed;
        QSignalSpy told(&model(), &AppModel::setupDoneChanged);
        runSetup();
        QCOMPARE(setupTask(u"cli"_s).state, State::Fail);
        QVERIFY(model().setupDone());
        QCOMPARE(told.count(), 1);
        QVERIFY(isIdle());
    }

    // Again and beside each other

    void tryAgainBeginsWithFreshRows()
    {
        seam().cli.answerStatus(attachErrorStatus(u"refused"_s));
        start();
        runSetup();
        QVERIFY(model().mountFailed());
        QSignalSpy told(&model(), &AppModel::mountFailedChanged);
        seam().cli.hold(FakeCLI::kRestart);
        runSetup();
        QCOMPARE(setupTasks(), u"login pass, mount pending, finder pending, cli pending"_s);
        QVERIFY(!setupTask(u"mount"_s).detail && !setupTask(u"mount"_s).fix);
        QCOMPARE(told.count(), 1);
    }

    void choiceChangedBetweenRunsAddsOrDropsTheCommand()
    {
        seam().cli.answerStatus(mountedStatus());
        start();
        setChoices(true, false);
        runSetup();
        QCOMPARE(model().setupTasks().size(), 3);
        setChoices(true, true);
        runSetup();
        QCOMPARE(setupTasks(), u"login pass, mount pass, finder pass, cli pass"_s);
    }

    void tryAgainDuringTheApprovalWaitEndsBothRunsCleanly()
    {
        startUnapproved();
        seam().cli.answerStatus(mountedStatus());
        runSetup();
        advance(500ms);
        runSetup();
        QCOMPARE(seam().registry.calls.count(u"open settings"_s), 2);
        advance(10s);
        seam().registry.agent.status = kEnabled;
        advance(1s);
        QCOMPARE(setupTasks(), u"login pass, mount pass, finder pass, cli pass"_s);
        QVERIFY(isIdle());
    }

    void twoRunsDuringTheMountWaitBothEnd()
    {
        seam().cli.answerStatus(unmountedStatus());
        start();
        runSetup();
        advance(2500ms);
        runSetup();
        advance(3s);
        seam().cli.answerStatus(mountedStatus());
        advance(2s);
        QVERIFY(model().setupDone());
        QVERIFY(isIdle());
    }

    void setupBesideAChecksRunDoesNotDisturbIt()
    {
        seam().cli.answerStatus(mountedStatus());
        start();
        seam().cli.holdLines();
        runChecks();
        runSetup();
        QVERIFY(model().setupDone());
        QVERIFY(model().checksRunning());
        seam().cli.endLines();
        QVERIFY(isIdle());
    }

    void toolThatDisappearsMidRunIsOutwaited()
    {
        seam().cli.answerStatus(unmountedStatus());
        start();
        runSetup();
        advance(2s);
        seam().cli.answer(FakeCLI::kStatus, FakeCLI::Answer::missing());
        advance(400s);
        QCOMPARE(setupTask(u"mount"_s).detail, u"The drive did not mount within 5 minutes."_s);
        QVERIFY(isIdle());
    }

private:
    void setChoices(bool menuAtLogin, bool installCLI)
    {
        SetupChoices choices;
        choices.menuAtLogin = menuAtLogin;
        choices.installCLI = installCLI;
        model().setChoices(choices);
    }

    void startUnapproved()
    {
        seam().registry.agent.registerError = "switched off by the user";
        seam().registry.agent.statusAfterRegister = kNeedsApproval;
        start();
    }

    CheckItem task(const QString& id, State state, const std::optional<QString>& detail)
    {
        CheckItem expected = setupTask(id);
        expected.state = state;
        expected.detail = detail;
        expected.fix.reset();
        return expected;
    }

    /// Every detail that the "mount" row shows from now on.
    QSharedPointer<QStringList> watchDetails()
    {
        auto details = QSharedPointer<QStringList>::create();
        connect(&model(), &AppModel::setupTasksChanged, &model(),
                [this, details] { details->append(setupTask(u"mount"_s).detail.value_or(QString())); });
        return details;
    }
};

FERROBANK_TEST(AppModelSetupRunTest)
#include "AppModelSetupRunTest.moc"
