#include "component/model/ModelTest.h"
#include "support/AllocatedBytes.h"
#include "support/TestProgram.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ferrobank;

namespace {

constexpr auto kEnabled = LoginServiceStatus::Enabled;

} // namespace

/// Construction, the start-up task, the poll, refresh, the volume icon and the login setting.
class AppModelStateTest : public ModelTest {
    Q_OBJECT

private Q_SLOTS:

    // Construction

    void firstLaunchShowsTheWelcomePage()
    {
        create();
        QCOMPARE(model().screen(), Screen::onboarding(Screen::Welcome));
        QVERIFY(!model().setupComplete());
    }

    void finishedSetupShowsTheDashboard()
    {
        seam().finishSetup();
        create();
        QCOMPARE(model().screen(), Screen::dashboard());
        QVERIFY(model().setupComplete());
    }

    void recordedSetupWithoutTheAgentShowsTheWelcomePage_data()
    {
        QTest::addColumn<LoginServiceStatus>("status");
        QTest::newRow("removed") << LoginServiceStatus::NotRegistered;
        QTest::newRow("switched off") << LoginServiceStatus::RequiresApproval;
        QTest::newRow("not found") << LoginServiceStatus::NotFound;
        QTest::newRow("unknown") << LoginServiceStatus{17};
    }

    void recordedSetupWithoutTheAgentShowsTheWelcomePage()
    {
        QFETCH(const LoginServiceStatus, status);
        seam().finishSetup();
        seam().registry.agent.status = status;
        create();
        QCOMPARE(model().screen(), Screen::onboarding(Screen::Welcome));
        QVERIFY(!model().setupComplete());
    }

    void agentIsNotAskedWhileSetupIsNotRecorded()
    {
        seam().registry.agent.status = kEnabled;
        create();
        QVERIFY(!model().setupComplete());
        QCOMPARE(seam().registry.agent.statusReads, 0);
        QVERIFY(seam().defaults.reads.contains(u"setupComplete"_s));
    }

    void newModelHasItsInitialValues()
    {
        create();
        QVERIFY(!model().status());
        QCOMPARE(model().choices(), SetupChoices());
        QVERIFY(model().choices().menuAtLogin && model().choices().installCLI);
        QVERIFY(model().setupTasks().isEmpty() && model().checks().isEmpty());
        QVERIFY(!model().checksRunning() && !model().checksPassed());
        QCOMPARE(model().uninstallState(), AppModel::UninstallState());
    }

    void loginSettingIsReadWithoutTouchingTheRegistry()
    {
        seam().registry.mainApp.status = kEnabled;
        create();
        QVERIFY(model().menuOpensAtLogin());
        QCOMPARE(seam().registry.mainApp.statusReads, 1);
        QCOMPARE(seam().registry.calls, QStringList());
    }

    // The registry in the background

    void registryIsNeverAskedOnTheMainThread()
    {
        seam().finishSetup();
        seam().registryWork.hold();
        start();
        model().setMenuOpensAtLogin(true);
        model().lookAtSetup();
        QCOMPARE(seam().registry.agent.statusReads + seam().registry.mainApp.statusReads, 0);
        QCOMPARE(seam().registry.calls, QStringList());
        seam().registryWork.letGo();
        QVERIFY(model().menuOpensAtLogin());
        QCOMPARE(seam().registry.mainApp.status, kEnabled);
        letEventsIn();
        QVERIFY(isIdle());
    }

    void recordedSetupShowsTheDashboardUntilTheAgentIsKnown()
    {
        seam().finishSetup();
        seam().registry.agent.status = LoginServiceStatus::NotRegistered;
        seam().registryWork.hold();
        create();
        QCOMPARE(model().screen(), Screen::dashboard());
        QVERIFY(!model().isSetupKnown());
        QVERIFY(model().setupComplete());
        QSignalSpy known(&model(), &AppModel::setupKnown);
        QSignalSpy told(&model(), &AppModel::setupCompleteChanged);
        seam().registryWork.letGo();
        QCOMPARE(model().screen(), Screen::onboarding(Screen::Welcome));
        QVERIFY(model().isSetupKnown());
        QVERIFY(!model().setupComplete());
        QCOMPARE(known.count(), 1);
        QCOMPARE(told.count(), 1);
    }

    void screenThatTheUserChoseStaysWhenTheAgentBecomesKnown()
    {
        seam().finishSetup();
        seam().registry.agent.status = LoginServiceStatus::NotRegistered;
        seam().registryWork.hold();
        create();
        model().setScreen(Screen::checks());
        seam().registryWork.letGo();
        QCOMPARE(model().screen(), Screen::checks());
        QVERIFY(!model().setupComplete());
    }

    void silentManagerAtTheStartUndoesNoSetupAndIsAskedAgain()
    {
        seam().finishSetup();
        seam().registry.agent.status = kNoAnswer;
        start();
        QSignalSpy known(&model(), &AppModel::setupKnown);
        advance(20s);
        QCOMPARE(model().screen(), Screen::dashboard());
        QVERIFY(model().setupComplete());
        QVERIFY(!model().isSetupKnown());
        QCOMPARE(known.count(), 0);
        seam().registry.agent.status = kEnabled;
        advance(5s);
        QVERIFY(model().isSetupKnown());
        QVERIFY(model().setupComplete());
        QCOMPARE(known.count(), 1);
        const int reads = seam().registry.agent.statusReads;
        advance(20s); // now that it is known, the polls leave it alone
        QCOMPARE(seam().registry.agent.statusReads, reads);
    }

    void agentThatIsMissingAfterASilenceLeadsToTheWelcomePage()
    {
        seam().finishSetup();
        seam().registry.agent.status = kNoAnswer;
        start();
        seam().registry.agent.status = LoginServiceStatus::NotRegistered;
        advance(5s);
        QCOMPARE(model().screen(), Screen::onboarding(Screen::Welcome));
        QVERIFY(!model().setupComplete());
    }

    void silenceLaterKeepsWhatWasKnown_data()
    {
        QTest::addColumn<LoginServiceStatus>("status");
        QTest::addColumn<bool>("complete");
        QTest::newRow("enabled") << kEnabled << true;
        QTest::newRow("switched off") << LoginServiceStatus::RequiresApproval << false;
    }

    void silenceLaterKeepsWhatWasKnown()
    {
        QFETCH(const LoginServiceStatus, status);
        QFETCH(const bool, complete);
        seam().finishSetup();
        seam().registry.agent.status = status;
        start();
        seam().registry.agent.status = kNoAnswer;
        model().lookAtSetup();
        advance(20s);
        QCOMPARE(model().setupComplete(), complete);
        QVERIFY(model().isSetupKnown());
    }

    void silentLoginItemKeepsTheSwitchAsItIs()
    {
        seam().registry.mainApp.status = kEnabled;
        start();
        seam().registry.mainApp.status = kNoAnswer;
        advance(10s);
        QVERIFY(model().menuOpensAtLogin());
    }

    void movedBundleIsFollowedAtTheStart()
    {
        seam().finishSetup();
        seam().registry.agent.status = LoginServiceStatus{4}; // registered from a bundle that is gone
        seam().registry.agent.moved = true;
        seam().registry.mainApp.status = LoginServiceStatus{4};
        seam().registry.mainApp.moved = true;
        create();
        QCOMPARE(model().screen(), Screen::dashboard());
        QVERIFY(model().setupComplete());
        QVERIFY(model().menuOpensAtLogin());
        QCOMPARE(seam().registry.followed, (QList{LoginService::MainApp, LoginService::Agent}));
    }

    void movedBundleIsFollowedOnceASilentManagerAnswers()
    {
        seam().finishSetup();
        seam().registry.agent.status = kNoAnswer;
        start();
        seam().registry.agent.status = LoginServiceStatus{4};
        seam().registry.agent.moved = true;
        advance(5s);
        QVERIFY(model().setupComplete());
        QCOMPARE(model().screen(), Screen::dashboard());
    }

    void answerFromBeforeAWishDoesNotUndoIt()
    {
        start();
        seam().registryWork.hold();
        advance(5s); // the poll's question is on its way
        model().setMenuOpensAtLogin(true);
        QSignalSpy told(&model(), &AppModel::menuOpensAtLoginChanged);
        seam().registryWork.letGo();
        QVERIFY(model().menuOpensAtLogin());
        QCOMPARE(told.count(), 0);
        QCOMPARE(seam().registry.mainApp.status, kEnabled);
    }

    void answerFromBeforeAWishAtTheStartDoesNotUndoIt()
    {
        seam().registryWork.hold();
        create();
        model().setMenuOpensAtLogin(true);
        seam().registryWork.letGo();
        QVERIFY(model().menuOpensAtLogin());
    }

    void wishesInQuickSuccessionAreCarriedOutInTheirOrder()
    {
        start();
        seam().registryWork.hold();
        for (const bool wish : {true, false, true, false}) {
            model().setMenuOpensAtLogin(wish);
        }
        seam().registryWork.letGo();
        QCOMPARE(seam().registry.calls, (QStringList{u"register login item"_s, u"unregister login item"_s,
                                                     u"register login item"_s, u"unregister login item"_s}));
        QVERIFY(!model().menuOpensAtLogin());
    }

    void nothingRunsInsideTheConstructor()
    {
        create();
        QVERIFY(seam().cli.calls().isEmpty());
        QCOMPARE(model().lifeline().holds(), 0);
    }

    void modelDestroyedBeforeItsFirstTurnRunsNothing()
    {
        create();
        destroyModel();
        letEventsIn();
        QVERIFY(seam().cli.calls().isEmpty());
    }

    // Start-up task

    void launchReadsTheStatusTwice()
    {
        start();
        QCOMPARE(seam().cli.calls(), (QList{FakeCLI::kStatus, FakeCLI::kStatus}));
    }

    void pendingUpdateRestartsTheDriveKeepingTheMount()
    {
        DriveStatus status = mountedStatus();
        status.update_pending = true;
        seam().cli.answerStatus(status);
        start();
        QCOMPARE(seam().cli.calls(),
                 (QList{FakeCLI::kStatus, FakeCLI::kRestartKeepMounted, FakeCLI::kStatus}));
        QVERIFY(isIdle());
    }

    void noPendingUpdateRestartsNothing_data()
    {
        QTest::addColumn<bool>("present");
        QTest::newRow("absent") << false;
        QTest::newRow("false") << true;
    }

    void noPendingUpdateRestartsNothing()
    {
        QFETCH(const bool, present);
        DriveStatus status = mountedStatus();
        if (present) {
            status.update_pending = false;
        }
        seam().cli.answerStatus(status);
        start();
        QCOMPARE(seam().cli.callsOf(FakeCLI::kRestartKeepMounted), 0);
    }

    void pendingUpdateIsLookedAtOnlyOnce()
    {
        start();
        DriveStatus status = mountedStatus();
        status.update_pending = true;
        seam().cli.answerStatus(status);
        advance(20s);
        QVERIFY(model().status()->update_pending.value());
        QCOMPARE(seam().cli.callsOf(FakeCLI::kRestartKeepMounted), 0);
    }

    void failedUpdateRestartIsIgnored()
    {
        DriveStatus status = mountedStatus();
        status.update_pending = true;
        seam().cli.answerStatus(status);
        seam().cli.answer(FakeCLI::kRestartKeepMounted, FakeCLI::Answer::fails(u"volume busy"_s));
        start();
        QVERIFY(isIdle());
        QCOMPARE(*model().status(), status);
    }

    void updateRestartDoesNotHoldUpThePoll()
    {
        DriveStatus status = mountedStatus();
        status.update_pending = true;
        seam().cli.answerStatus(status);
        seam().cli.hold(FakeCLI::kRestartKeepMounted);
        start();
        advance(10s);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kStatus), 4);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kRestartKeepMounted), 1);
    }

    // Poll

    void missingToolLeavesTheStatusAbsentAndThePollGoingOn()
    {
        seam().cli.answer(FakeCLI::kStatus, FakeCLI::Answer::missing());
        start();
        QSignalSpy told(&model(), &AppModel::statusChanged);
        for (int polls = 2; polls < 20; ++polls) {
            QCOMPARE(seam().cli.callsOf(FakeCLI::kStatus), polls);
            advance(5s);
        }
        QVERIFY(!model().status());
        QCOMPARE(told.count(), 0);
    }

    void pollSleepsFiveSecondsAfterEachPass()
    {
        seam().cli.hold(FakeCLI::kStatus);
        start();
        QCOMPARE(seam().clock.sleepers(), 0);
        advance(3s); // the tool takes its time
        seam().cli.answerStatus(unmountedStatus());
        QCOMPARE(seam().clock.sleepers(), 1);
        advance(4999ms);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kStatus), 2);
        advance(1ms);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kStatus), 3);
        QCOMPARE(seam().clock.sleeps(), QList<VirtualClock::Milliseconds>({5s, 5s}));
    }

    void wallClockJumpsDoNotMoveThePoll()
    {
        start();
        seam().clock.jumpWall(-24h);
        advance(4999ms);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kStatus), 2);
        seam().clock.jumpWall(48h);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kStatus), 2);
        advance(1ms);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kStatus), 3);
    }

    void hangingToolNeverHasTwoPolls()
    {
        start();
        seam().cli.hold(FakeCLI::kStatus);
        advance(10min);
        QCOMPARE(seam().cli.waiting(FakeCLI::kStatus), 1);
        model().setScreen(Screen::checks()); // nothing else is held up
        QCOMPARE(model().screen(), Screen::checks());
        seam().cli.answerStatus(mountedStatus());
        QVERIFY(model().status()->mounted);
        QVERIFY(isIdle());
    }

    void pollCostsNoMemoryHowLongEverItGoesOn();

    // refresh()

    void failedReadKeepsTheOldStatus_data()
    {
        QTest::addColumn<QString>("output");
        QTest::addColumn<bool>("fails");
        QTest::newRow("non-zero exit") << QString() << true;
        QTest::newRow("no output") << QString() << false;
        QTest::newRow("not JSON") << u"drive: ok"_s << false;
        QTest::newRow("no log key") << uR"({"installed":true,"mounted":true,"mountpoint":"/m"})"_s << false;
    }

    void failedReadKeepsTheOldStatus()
    {
        QFETCH(const QString, output);
        QFETCH(const bool, fails);
        seam().cli.answerStatus(mountedStatus());
        start();
        QSignalSpy told(&model(), &AppModel::statusChanged);
        seam().cli.answer(FakeCLI::kStatus,
                          fails ? FakeCLI::Answer::fails(u"broken"_s) : FakeCLI::Answer::text(output));
        advance(5s);
        QCOMPARE(*model().status(), mountedStatus());
        QCOMPARE(told.count(), 0);
    }

    void statusIsToldEvenWhenItIsEqual()
    {
        seam().cli.answerStatus(mountedStatus());
        start();
        QSignalSpy told(&model(), &AppModel::statusChanged);
        advance(5s);
        advance(5s);
        QCOMPARE(told.count(), 2);
    }

    void theLastReadToEndWins()
    {
        start();
        seam().cli.hold(FakeCLI::kStatus);
        advance(5s);
        spawn(&model(), model().refresh());
        QCOMPARE(seam().cli.waiting(FakeCLI::kStatus), 2);
        seam().cli.finish(FakeCLI::kStatus, FakeCLI::Answer::text(toJson(unmountedStatus())));
        QVERIFY(!model().status()->mounted);
        seam().cli.finish(FakeCLI::kStatus, FakeCLI::Answer::text(toJson(mountedStatus())));
        QVERIFY(model().status()->mounted);
    }

    void refreshWithoutAnAnswerStillReadsTheLoginSetting()
    {
        seam().cli.answer(FakeCLI::kStatus, FakeCLI::Answer::missing());
        start();
        seam().registry.mainApp.status = kEnabled;
        advance(5s);
        QVERIFY(model().menuOpensAtLogin());
    }

    // Volume icon

    void mountedVolumeGetsItsIconOnce()
    {
        seam().cli.answerStatus(mountedStatus());
        start();
        advance(5s);
        const auto image = seam().folder.filePath(u"VolumeIcon.icns"_s);
        QCOMPARE(seam().workspace.volumeIcons, (QList{qMakePair(image, FakeSeam::kMountpoint)}));
    }

    void unmountedVolumeIsNotLookedAt()
    {
        seam().cli.answerStatus(unmountedStatus());
        start();
        advance(5s);
        QVERIFY(seam().volumes.existenceQuestions.isEmpty());
        QVERIFY(seam().workspace.volumeIcons.isEmpty());
    }

    void iconThatIsThereIsKept()
    {
        seam().volumes.present.insert(FakeSeam::kMountpoint + u"/.VolumeIcon.icns"_s);
        seam().cli.answerStatus(mountedStatus());
        start();
        QVERIFY(!seam().volumes.existenceQuestions.isEmpty());
        QVERIFY(seam().workspace.volumeIcons.isEmpty());
    }

    void volumeThatDoesNotAnswerIsLeftAlone()
    {
        seam().volumes.silent.insert(FakeSeam::kMountpoint + u"/.VolumeIcon.icns"_s);
        seam().cli.answerStatus(mountedStatus());
        start();
        QVERIFY(seam().workspace.volumeIcons.isEmpty());
        QVERIFY(isIdle());
    }

    void missingIconImageDoesNothing()
    {
        QVERIFY(QFile::remove(seam().folder.filePath(u"VolumeIcon.icns"_s)));
        seam().cli.answerStatus(mountedStatus());
        start();
        QVERIFY(seam().workspace.volumeIcons.isEmpty());
    }

    void slowIconHoldsUpOnlyThePoll()
    {
        seam().workspace.iconsSet.shut();
        seam().cli.answerStatus(mountedStatus());
        start();
        advance(1min);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kStatus), 2);
        QCOMPARE(seam().workspace.volumeIcons.size(), 1);
        seam().workspace.iconsSet.open();
        advance(5s);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kStatus), 3);
    }

    // Login setting

    void settingWhatTheSystemHasCallsNothing()
    {
        seam().registry.mainApp.status = kEnabled;
        start();
        model().setMenuOpensAtLogin(true);
        QCOMPARE(seam().registry.calls, QStringList());
    }

    void wishRegistersAndUnregistersTheLoginItem()
    {
        start();
        QSignalSpy told(&model(), &AppModel::menuOpensAtLoginChanged);
        model().setMenuOpensAtLogin(true);
        model().setMenuOpensAtLogin(false);
        QCOMPARE(seam().registry.calls, (QStringList{u"register login item"_s, u"unregister login item"_s}));
        QCOMPARE(told.count(), 2);
    }

    void equalWishIsSilentButStillChecksTheSystem()
    {
        seam().registry.mainApp.status = kEnabled;
        start();
        QSignalSpy told(&model(), &AppModel::menuOpensAtLoginChanged);
        seam().registry.mainApp.status = LoginServiceStatus::NotRegistered; // somebody else was here
        model().setMenuOpensAtLogin(true);
        QCOMPARE(told.count(), 0);
        QCOMPARE(seam().registry.calls, QStringList{u"register login item"_s});
    }

    void failingRegistryIsIgnoredUntilTheNextRefreshShowsTheTruth()
    {
        start();
        seam().registry.mainApp.registerError = "the folder is read-only";
        model().setMenuOpensAtLogin(true);
        QVERIFY(model().menuOpensAtLogin());
        advance(5s);
        QVERIFY(!model().menuOpensAtLogin());
        QCOMPARE(seam().registry.calls.size(), 1);
    }

    void loginItemThatAwaitsApprovalReadsAsOff()
    {
        seam().registry.mainApp.status = LoginServiceStatus::RequiresApproval;
        start();
        QVERIFY(!model().menuOpensAtLogin());
        seam().registry.mainApp.statusAfterRegister = LoginServiceStatus::RequiresApproval;
        model().setMenuOpensAtLogin(true);
        advance(5s);
        QVERIFY(!model().menuOpensAtLogin());
    }

    void wishDuringAHangingPollStays()
    {
        start();
        seam().cli.hold(FakeCLI::kStatus);
        advance(5s);
        model().setMenuOpensAtLogin(true);
        seam().cli.answerStatus(mountedStatus());
        QVERIFY(model().menuOpensAtLogin());
        QCOMPARE(seam().registry.calls, QStringList{u"register login item"_s});
        QCOMPARE(seam().registry.mainApp.lastSwitch, UserSwitch::Override); // the user's own click
    }

    void refreshFollowsTheSystemWithoutChangingIt()
    {
        start();
        QSignalSpy told(&model(), &AppModel::menuOpensAtLoginChanged);
        seam().registry.mainApp.status = kEnabled;
        advance(5s);
        QVERIFY(model().menuOpensAtLogin());
        seam().registry.mainApp.status = LoginServiceStatus::NotRegistered;
        advance(5s);
        QVERIFY(!model().menuOpensAtLogin());
        QCOMPARE(told.count(), 2);
        QCOMPARE(seam().registry.calls, QStringList());
    }

    void refreshAsksForTheLoginSettingOnce()
    {
        start();
        const int before = seam().registry.mainApp.statusReads;
        advance(5s);
        QCOMPARE(seam().registry.mainApp.statusReads, before + 1);
    }

    void registryThatTakesHalfAMinuteOnlyDelays()
    {
        start();
        seam().registry.meanwhile = [this] { seam().clock.jumpWall(30s); };
        model().setMenuOpensAtLogin(true);
        advance(5s);
        QVERIFY(model().menuOpensAtLogin());
        QVERIFY(isIdle());
    }

    // Observation

    void assigningTheCurrentScreenIsSilent()
    {
        create();
        QSignalSpy told(&model(), &AppModel::screenChanged);
        model().setScreen(Screen::onboarding(Screen::Welcome));
        QCOMPARE(told.count(), 0);
        model().setScreen(Screen::onboarding(Screen::Consent));
        model().setScreen(Screen::onboarding(Screen::Consent));
        QCOMPARE(told.count(), 1);
        model().setScreen(Screen::uninstall());
        QCOMPARE(told.count(), 2);
    }

    void whoIsToldReadsTheNewValue()
    {
        create();
        QStringList read;
        AppModel* const told = &model();
        connect(told, &AppModel::screenChanged, told, [=, &read] {
            read << (told->screen() == Screen::uninstall() ? u"new screen"_s : u"old screen"_s);
        });
        connect(told, &AppModel::choicesChanged, told,
                [=, &read] { read << (told->choices().installCLI ? u"old choices"_s : u"new choices"_s); });
        connect(told, &AppModel::menuOpensAtLoginChanged, told,
                [=, &read] { read << (told->menuOpensAtLogin() ? u"new setting"_s : u"old setting"_s); });
        connect(told, &AppModel::uninstallStateChanged, told, [=, &read] {
            const bool running = told->uninstallState().kind == AppModel::UninstallState::Kind::Running;
            read << (running ? u"running"_s : told->uninstallState().text);
        });
        connect(told, &AppModel::setupCompleteChanged, told,
                [=, &read] { read << (told->setupComplete() ? u"complete"_s : u"incomplete"_s); });
        connect(told, &AppModel::checksRunningChanged, told,
                [=, &read] { read << (told->checksRunning() ? u"checks run"_s : u"checks are over"_s); });
        connect(told, &AppModel::statusChanged, told,
                [=, &read] { read << (told->status()->mounted ? u"mounted"_s : u"not mounted"_s); });
        model().setScreen(Screen::uninstall());
        SetupChoices choices;
        choices.installCLI = false;
        model().setChoices(choices);
        model().setMenuOpensAtLogin(true);
        seam().registry.agent.status = kEnabled;
        model().recordSetupComplete();
        QCOMPARE(read, (QStringList{u"new screen"_s, u"new choices"_s, u"new setting"_s, u"complete"_s}));
        read.clear();
        seam().cli.answerStatus(mountedStatus());
        runChecks();
        QCOMPARE(read, (QStringList{u"checks run"_s, u"mounted"_s, u"checks are over"_s}));
        read.clear();
        spawn(told, model().uninstall({}, true));
        QCOMPARE(read, (QStringList{u"running"_s, u"incomplete"_s,
                                    u"The drive's data is deleted from this Mac."_s, u"mounted"_s}));
        letEventsIn();
    }

    void assigningEqualChoicesIsSilent()
    {
        create();
        QSignalSpy told(&model(), &AppModel::choicesChanged);
        model().setChoices({});
        QCOMPARE(told.count(), 0);
        SetupChoices choices;
        choices.installCLI = false;
        model().setChoices(choices);
        QCOMPARE(told.count(), 1);
        QCOMPARE(model().choices(), choices);
    }

    void choicesCanBeChangedOneByOneThroughProperties()
    {
        create();
        QVariant choices = model().property("choices");
        auto value = choices.value<SetupChoices>();
        QVERIFY(SetupChoices::staticMetaObject.property(1).writeOnGadget(&value, false));
        QVERIFY(model().setProperty("choices", QVariant::fromValue(value)));
        QVERIFY(model().choices().menuAtLogin && !model().choices().installCLI);
    }

    void screensReadTheModelThroughProperties()
    {
        seam().finishSetup();
        create();
        QCOMPARE(model().property("screen").value<Screen>(), Screen::dashboard());
        QCOMPARE(model().property("setupTaskRows").value<CheckItemModel*>(), model().setupTaskRows());
        QCOMPARE(model().property("checkRows").value<CheckItemModel*>(), model().checkRows());
        for (const char* flag :
             {"setupDone", "mountFailed", "checksRunning", "checksPassed", "menuOpensAtLogin"})
        {
            QCOMPARE(model().property(flag), QVariant(false));
        }
        QVERIFY(model().setProperty("menuOpensAtLogin", true));
        QCOMPARE(seam().registry.calls, QStringList{u"register login item"_s});
    }

    // Setup record

    void recordingSetupMakesItComplete()
    {
        create();
        seam().registry.agent.status = kEnabled;
        QSignalSpy told(&model(), &AppModel::setupCompleteChanged);
        QVERIFY(model().recordSetupComplete());
        QVERIFY(model().setupComplete());
        QCOMPARE(told.count(), 1);
    }

    void recordThatDoesNotReachTheDiskIsReported()
    {
        create();
        seam().defaults.reachesDisk = false;
        QVERIFY(!model().recordSetupComplete());
    }
};

void AppModelStateTest::pollCostsNoMemoryHowLongEverItGoesOn()
{
    seam().cli.answerStatus(mountedStatus());
    start();
    const auto pollALot = [this](int polls) {
        for (int poll = 0; poll < polls; ++poll) {
            advance(5s);
        }
        const int made = seam().cli.callsOf(FakeCLI::kStatus);
        seam().forgetCalls();
        return made;
    };
    pollALot(1'000);
    const std::size_t before = allocatedBytes();
    QCOMPARE(pollALot(10'000), 10'000);
    const std::size_t after = allocatedBytes();
    // One lost object in each poll would be 160,000 bytes; a container that keeps room for later is none.
    QVERIFY2(after < before + 32'768, qPrintable(u"%1 bytes more"_s.arg(after - before)));
    QVERIFY(isIdle());
}

FERROBANK_TEST(AppModelStateTest)
#include "AppModelStateTest.moc"
