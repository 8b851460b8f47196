#include "Platform/linux/updates/session/UpdateSession.h"

#include "Platform/linux/updates/session/ProcessWorker.h"
#include "support/TestProgram.h"
#include "support/fakes/VirtualClock.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <csignal>

using namespace ferrobank;
using namespace ferrobank::updates;
using namespace Qt::StringLiterals;
using std::chrono::hours;
using std::chrono::seconds;

namespace {

/// Remembers what it was told to do; the test speaks for the process.
class FakeWorker final : public UpdateWorker {
public:
    struct Command {
        QString name;
        QJsonObject request;
        Listener listener;
        bool isDropped = false;
        bool isReleased = false;
    };

    class Run final : public WorkerRun {
    public:
        explicit Run(std::shared_ptr<Command> command) : _command(std::move(command)) {}

        ~Run() override { _command->isDropped = !_command->isReleased; }

        void release() override { _command->isReleased = true; }

        bool waitForEvent(int) override { return true; }

    private:
        std::shared_ptr<Command> _command;
    };

    std::unique_ptr<WorkerRun> start(const QString& command, const QJsonObject& request,
                                     Listener listener) override
    {
        commands.push_back(std::make_shared<Command>(Command{command, request, std::move(listener)}));
        return std::make_unique<Run>(commands.back());
    }

    [[nodiscard]] QStringList names() const
    {
        QStringList all;
        for (const auto& command : commands)
            all.append(command->name);
        return all;
    }

    [[nodiscard]] const QJsonObject& lastRequest() const { return commands.back()->request; }

    void tell(const QJsonObject& event) const
    {
        const Listener listener = commands.back()->listener;
        listener(event);
    }

    std::vector<std::shared_ptr<Command>> commands;
};

class SpyInterface final : public UpdateInterface {
public:
    void show(const UpdatePrompt& shown) override
    {
        prompt = shown;
        isOpen = true;
    }

    void raise() override { ++raised; }

    void close() override { isOpen = false; }

    UpdatePrompt prompt;
    bool isOpen = false;
    int raised = 0;
};

class SpySurroundings final : public UpdateSurroundings {
public:
    void notify(const QString& title, const QString& text) override { notices.append(title + u'|' + text); }

    void openPage(const QString& url) override { pages.append(url); }

    QStringList notices;
    QStringList pages;
};

class FakeDelegate final : public UpdateDelegate {
public:
    bool willInstallUpdateOnQuit(const UpdateItem& item, std::function<void()> block) override
    {
        asked.append(item.version);
        if (mayInstall)
            block();
        return mayInstall;
    }

    bool mayInstall = false;
    QStringList asked;
};

QJsonObject offer(const QString& version = u"1.0.1"_s)
{
    return {{u"version"_s, version}, {u"displayVersion"_s, version}, {u"length"_s, 100}};
}

QJsonObject checkedWith(const QJsonObject& itsOffer, bool mayReplace = true)
{
    QJsonObject event{{u"event"_s, u"checked"_s},
                      {u"highestVersion"_s, u"1.0.1"_s},
                      {u"newestDate"_s, u"2026-11-20T10:00:00Z"_s},
                      {u"place"_s, QJsonObject{{u"mayReplace"_s, mayReplace},
                                               {u"sentence"_s, u"Packaged."_s},
                                               {u"advice"_s, u"apt"_s}}}};
    if (itsOffer.isEmpty())
        event[u"reason"_s] = u"onLatest"_s;
    else
        event[u"offer"_s] = itsOffer;
    return event;
}

QJsonObject statusOf(const QJsonObject& staged = {}, bool mayReplace = true)
{
    QJsonObject event{{u"event"_s, u"status"_s}, {u"place"_s, QJsonObject{{u"mayReplace"_s, mayReplace}}}};
    if (!staged.isEmpty())
        event[u"staged"_s] = staged;
    return event;
}

QJsonObject failure(const QString& problem)
{
    return {{u"event"_s, u"failed"_s}, {u"problem"_s, problem}, {u"sentence"_s, u"It failed."_s}};
}

const QJsonObject kStaged{{u"event"_s, u"staged"_s}};

/// A session with everything around it faked.
struct Surroundings {
    explicit Surroundings(std::optional<bool> automatic = true, bool isOn = true)
    {
        if (isOn) {
            configuration.feed = QUrl(u"https://example.org"_s);
            configuration.keys = {"key"};
        }
        configuration.version = u"1.0.0"_s;
        configuration.automaticChecks = automatic;
        configuration.automaticDownload = true;
        begin();
    }

    void begin()
    {
        session.reset();
        session = std::make_unique<UpdateSession>(SessionCollaborators{
            .configuration = configuration,
            .bundle = u"/bundle"_s,
            .delegate = delegate,
            .interface = interface,
            .surroundings = surroundings,
            .worker = worker,
            .clock = clock,
            .stateFile = stateFile(),
            .quit = [this] { ++quits; },
            .isOnTrial = [this] { return isOnTrial; },
            .versionInPlace = [this] { return inPlace; },
        });
        session->start();
    }

    [[nodiscard]] UpdateStateFile stateFile() const
    {
        return UpdateStateFile(folder.filePath(u"updates.json"_s).toStdString());
    }

    void beginWithStatus(const QJsonObject& status = statusOf())
    {
        clock.advance(seconds(5));
        worker.tell(status);
    }

    /// Start-up, then the first scheduled check, answered with the event.
    void checkInBackground(const QJsonObject& event)
    {
        beginWithStatus();
        QCoreApplication::processEvents(); // the first check is due at once
        worker.tell(event);
    }

    [[nodiscard]] QStringList buttons() const
    {
        QStringList texts;
        for (const UpdateButton& button : interface.prompt.buttons)
            texts.append(button.text);
        return texts;
    }

    QTemporaryDir folder;
    UpdateConfiguration configuration;
    VirtualClock clock;
    FakeWorker worker;
    SpyInterface interface;
    SpySurroundings surroundings;
    FakeDelegate delegate;
    bool isOnTrial = false;
    QString inPlace = u"1.0.0"_s;
    int quits = 0;
    std::unique_ptr<UpdateSession> session;
};

} // namespace

class UpdateSessionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void silentUpdateInstallsItselfWithoutAWindow()
    {
        Surroundings stage;
        stage.delegate.mayInstall = true;
        stage.checkInBackground(checkedWith(offer()));
        QCOMPARE(stage.worker.names(), (QStringList{u"status"_s, u"check"_s, u"fetch"_s}));
        QCOMPARE(stage.worker.lastRequest()[u"offer"_s].toObject()[u"version"_s].toString(), u"1.0.1"_s);
        stage.worker.tell(kStaged);
        QCOMPARE(stage.delegate.asked, QStringList{u"1.0.1"_s});
        QCOMPARE(stage.worker.names().last(), u"install"_s);
        QVERIFY(stage.worker.lastRequest()[u"relaunch"_s].toBool());
        QCOMPARE(stage.worker.lastRequest()[u"pid"_s].toInteger(),
                 qint64{QCoreApplication::applicationPid()});
        QCOMPARE(stage.quits, 0);
        stage.worker.tell({{u"event"_s, u"waiting"_s}});
        QCOMPARE(stage.quits, 1);
        QVERIFY(stage.worker.commands.back()->isReleased);
        QVERIFY(!stage.interface.isOpen);
        QVERIFY(stage.surroundings.notices.isEmpty());
    }

    void refusedUpdateIsOfferedAgainWhenTheWindowCloses()
    {
        Surroundings stage;
        stage.checkInBackground(checkedWith(offer()));
        stage.worker.tell(kStaged);
        QCOMPARE(stage.worker.names().last(), u"fetch"_s);
        stage.session->reconsider();
        QCOMPARE(stage.delegate.asked.size(), 2);
        QCOMPARE(stage.worker.names().last(), u"fetch"_s);
        stage.delegate.mayInstall = true;
        stage.session->reconsider();
        QCOMPARE(stage.worker.names().last(), u"install"_s);
        stage.session->reconsider();
        QCOMPARE(stage.delegate.asked.size(), 3);
    }

    void refusedUpdateIsOfferedAgainAtTheNextScheduledCheck()
    {
        Surroundings stage;
        stage.checkInBackground(checkedWith(offer()));
        stage.worker.tell(kStaged);
        stage.delegate.mayInstall = true;
        stage.clock.advance(hours(24 * 8));
        QCOMPARE(stage.worker.names().last(), u"install"_s);
    }

    void refusedUpdateIsInstalledWhenTheApplicationQuits()
    {
        Surroundings stage;
        stage.checkInBackground(checkedWith(offer()));
        stage.worker.tell(kStaged);
        stage.session->applicationQuits();
        QCOMPARE(stage.worker.names().last(), u"install"_s);
        QVERIFY(!stage.worker.lastRequest()[u"relaunch"_s].toBool());
        QVERIFY(stage.worker.commands.back()->isReleased);
    }

    void nothingIsInstalledAtQuitWhenNothingWaits()
    {
        Surroundings stage;
        stage.beginWithStatus();
        stage.session->applicationQuits();
        QCOMPARE(stage.worker.names(), QStringList{u"status"_s});
    }

    void updateDownloadedEarlierIsOfferedAtTheNextStart()
    {
        Surroundings stage;
        stage.delegate.mayInstall = true;
        stage.beginWithStatus(statusOf(offer()));
        QCOMPARE(stage.delegate.asked, QStringList{u"1.0.1"_s});
        QCOMPARE(stage.worker.names().last(), u"install"_s);
    }

    void installationThatFailsKeepsTheApplicationRunning()
    {
        Surroundings stage;
        stage.delegate.mayInstall = true;
        stage.checkInBackground(checkedWith(offer()));
        stage.worker.tell(kStaged);
        stage.worker.tell(failure(u"archive"_s));
        QCOMPARE(stage.quits, 0);
        QCOMPARE(stage.session->view().stage, updates::Stage::Idle);
        QVERIFY(!stage.interface.isOpen);
    }

    void majorInformationalAndUnwantedUpdatesAreOnlyAnnouncedOnce_data()
    {
        QTest::addColumn<QString>("flag");
        QTest::newRow("major") << u"major"_s;
        QTest::newRow("informational") << u"informational"_s;
        QTest::newRow("automatic download off") << QString();
        QTest::newRow("packaged") << u"packaged"_s;
    }

    void majorInformationalAndUnwantedUpdatesAreOnlyAnnouncedOnce()
    {
        QFETCH(QString, flag);
        Surroundings stage;
        if (flag.isEmpty())
            stage.interface.automaticChanged(false);
        QJsonObject found = offer();
        found[flag] = true;
        const QJsonObject event = checkedWith(found, flag != u"packaged"_s);
        stage.checkInBackground(event);
        QCOMPARE(stage.worker.names().last(), u"check"_s);
        QCOMPARE(stage.surroundings.notices.size(), 1);
        QVERIFY(stage.surroundings.notices.first().contains(u"1.0.1"_s));
        QVERIFY(!stage.interface.isOpen);
        if (flag == u"packaged"_s)
            return;
        stage.clock.advance(hours(30));
        QCOMPARE(stage.worker.commands.size(), 3U);
        stage.worker.tell(event);
        QCOMPARE(stage.surroundings.notices.size(), 1);
    }

    void notificationLeadsToTheWindow()
    {
        Surroundings stage;
        QJsonObject found = offer();
        found[u"major"_s] = true;
        stage.checkInBackground(checkedWith(found));
        stage.surroundings.openUpdate();
        QVERIFY(stage.interface.isOpen);
        stage.worker.tell(checkedWith(found));
        QCOMPARE(stage.buttons().first(), u"Install Update"_s);
    }

    void criticalUpdateThatWaitsIsToldPromptly()
    {
        Surroundings stage;
        QJsonObject found = offer();
        found[u"critical"_s] = true;
        stage.checkInBackground(checkedWith(found));
        stage.worker.tell(kStaged);
        QCOMPARE(stage.surroundings.notices.size(), 1);
    }

    void updateThatWaitsForAWeekIsTold()
    {
        Surroundings stage;
        stage.checkInBackground(checkedWith(offer()));
        stage.worker.tell(kStaged);
        stage.clock.advance(hours(24 * 6));
        QVERIFY(stage.surroundings.notices.isEmpty());
        stage.clock.advance(hours(24 * 2));
        QCOMPARE(stage.surroundings.notices.size(), 1);
        QVERIFY(stage.surroundings.notices.first().contains(u"1.0.1 is ready"_s));
        QVERIFY(!stage.interface.isOpen);
    }

    void copyReplacedBySomebodyElseIsToldOnceAndRelaunchedOnRequest()
    {
        Surroundings stage;
        stage.beginWithStatus();
        stage.session->bundleChanged();
        QVERIFY(stage.surroundings.notices.isEmpty());
        stage.inPlace = u"1.0.5"_s;
        stage.session->bundleChanged();
        stage.session->bundleChanged();
        QCOMPARE(stage.surroundings.notices.size(), 1);
        QVERIFY(!stage.interface.isOpen);
        stage.surroundings.openUpdate();
        QCOMPARE(stage.buttons(), (QStringList{u"Relaunch"_s, u"Later"_s}));
        QVERIFY(stage.interface.prompt.text.contains(u"1.0.5 is installed; 1.0.0 is still running"_s));
        stage.interface.act(UpdateAction::Relaunch);
        QCOMPARE(stage.worker.names().last(), u"relaunch"_s);
        QCOMPARE(stage.worker.lastRequest()[u"from"_s].toString(), u"1.0.0"_s);
        stage.worker.tell({{u"event"_s, u"waiting"_s}});
        QCOMPARE(stage.quits, 1);
        QVERIFY(stage.worker.commands.back()->isReleased);
    }

    void replacedCopyChecksAndInstallsNothingMore()
    {
        Surroundings stage;
        stage.checkInBackground(checkedWith(offer()));
        stage.worker.tell(kStaged);
        stage.delegate.mayInstall = true;
        stage.inPlace = u"1.0.5"_s;
        const QStringList before = stage.worker.names();
        stage.session->reconsider();
        stage.clock.advance(hours(24 * 15));
        stage.session->applicationQuits();
        QCOMPARE(stage.worker.names(), before);
        QCOMPARE(stage.surroundings.notices.size(), 1);
    }

    void copyThatWasRemovedWhileItRunsIsNoUpdate()
    {
        Surroundings stage;
        stage.beginWithStatus();
        stage.inPlace.clear();
        stage.session->bundleChanged();
        QVERIFY(stage.surroundings.notices.isEmpty());
        stage.session->checkForUpdates();
        QCOMPARE(stage.worker.names().last(), u"check"_s);
    }

    void relaunchLaterKeepsEverythingAsItIs()
    {
        Surroundings stage;
        stage.beginWithStatus();
        stage.inPlace = u"1.0.5"_s;
        stage.session->checkForUpdates();
        stage.interface.act(UpdateAction::Close);
        QVERIFY(!stage.interface.isOpen);
        QCOMPARE(stage.quits, 0);
        stage.session->checkForUpdates();
        QCOMPARE(stage.buttons().first(), u"Relaunch"_s);
    }

    void userCheckRunsThroughTheWindowToTheRelaunch()
    {
        Surroundings stage;
        stage.beginWithStatus();
        stage.session->checkForUpdates();
        QCOMPARE(stage.buttons(), QStringList{u"Cancel"_s});
        QVERIFY(stage.worker.lastRequest()[u"byUser"_s].toBool());
        stage.worker.tell(checkedWith(offer()));
        QCOMPARE(stage.buttons().first(), u"Install Update"_s);
        stage.interface.act(UpdateAction::Install);
        QVERIFY(stage.interface.prompt.isBusy);
        stage.worker.tell({{u"event"_s, u"progress"_s}, {u"bytes"_s, 50}});
        QCOMPARE(stage.interface.prompt.progress, std::optional(0.5));
        stage.worker.tell({{u"event"_s, u"verifying"_s}});
        QVERIFY(stage.buttons().isEmpty());
        stage.worker.tell(kStaged);
        QCOMPARE(stage.buttons().first(), u"Install and Relaunch"_s);
        QVERIFY(stage.delegate.asked.isEmpty());
        stage.interface.act(UpdateAction::InstallAndRelaunch);
        stage.worker.tell({{u"event"_s, u"waiting"_s}});
        QCOMPARE(stage.quits, 1);
    }

    void installOnQuitMeansOnQuit()
    {
        Surroundings stage;
        stage.beginWithStatus();
        stage.session->checkForUpdates();
        stage.worker.tell(checkedWith(offer()));
        stage.interface.act(UpdateAction::Install);
        stage.worker.tell(kStaged);
        stage.delegate.mayInstall = true;
        stage.interface.act(UpdateAction::Close);
        QVERIFY(!stage.interface.isOpen);
        stage.session->reconsider();
        QVERIFY(stage.delegate.asked.isEmpty());
        stage.session->checkForUpdates();
        QCOMPARE(stage.buttons().first(), u"Install and Relaunch"_s);
        stage.interface.act(UpdateAction::Close);
        stage.session->applicationQuits();
        QCOMPARE(stage.worker.names().last(), u"install"_s);
    }

    void askingTwiceOnlyRaisesTheWindow()
    {
        Surroundings stage;
        stage.session->checkForUpdates();
        stage.session->checkForUpdates();
        QCOMPARE(stage.worker.names(), QStringList{u"check"_s});
        QCOMPARE(stage.interface.raised, 1);
    }

    void askingDuringABackgroundSessionBringsItUp()
    {
        Surroundings stage;
        stage.checkInBackground(checkedWith(offer()));
        QVERIFY(!stage.interface.isOpen);
        stage.session->checkForUpdates();
        QVERIFY(stage.interface.isOpen && stage.interface.prompt.isBusy);
        QCOMPARE(stage.worker.names().last(), u"fetch"_s);
        stage.worker.tell(kStaged);
        QCOMPARE(stage.buttons().first(), u"Install and Relaunch"_s);
    }

    void cancellingEndsTheWorkerAndTheWindow()
    {
        Surroundings stage;
        stage.session->checkForUpdates();
        stage.interface.act(UpdateAction::Cancel);
        QVERIFY(stage.worker.commands.back()->isDropped);
        QVERIFY(!stage.interface.isOpen);
        QCOMPARE(stage.session->view().stage, updates::Stage::Idle);
    }

    void closingTheWindowWhileUnpackingLeavesThatToTheBackground()
    {
        Surroundings stage;
        stage.session->checkForUpdates();
        stage.worker.tell(checkedWith(offer()));
        stage.interface.act(UpdateAction::Install);
        stage.worker.tell({{u"event"_s, u"verifying"_s}});
        stage.interface.act(UpdateAction::Close);
        QVERIFY(!stage.interface.isOpen);
        QVERIFY(!stage.worker.commands.back()->isDropped);
        stage.worker.tell(kStaged);
        QCOMPARE(stage.delegate.asked, QStringList{u"1.0.1"_s});
        QVERIFY(!stage.interface.isOpen);
    }

    void nothingNewIsSaidOnlyToTheUser()
    {
        Surroundings stage;
        stage.checkInBackground(checkedWith({}));
        QVERIFY(!stage.interface.isOpen && stage.surroundings.notices.isEmpty());
        stage.session->checkForUpdates();
        stage.worker.tell(checkedWith({}));
        QCOMPARE(stage.interface.prompt.headline, u"You’re up to date!"_s);
        stage.interface.act(UpdateAction::Close);
        QVERIFY(!stage.interface.isOpen);
    }

    void failuresAreSilentInTheBackgroundAndBackOff()
    {
        Surroundings stage;
        stage.checkInBackground(failure(u"network"_s));
        QVERIFY(!stage.interface.isOpen && stage.surroundings.notices.isEmpty());
        const auto checks = [&stage] { return stage.worker.names().count(u"check"_s); };
        QCOMPARE(checks(), 1);
        stage.clock.advance(hours(2));
        QCOMPARE(checks(), 2);
        stage.worker.tell(failure(u"network"_s));
        stage.clock.advance(hours(1));
        QCOMPARE(checks(), 2);
        stage.clock.advance(hours(2));
        QCOMPARE(checks(), 3);
    }

    void failureIsShownToTheUserInWords()
    {
        Surroundings stage;
        stage.session->checkForUpdates();
        stage.worker.tell(failure(u"signature"_s));
        QCOMPARE(stage.interface.prompt.text, u"It failed."_s);
        QCOMPARE(stage.buttons(), QStringList{u"OK"_s});
    }

    void buildWithoutAFeedNeverChecksByItselfAndSaysSoWhenAsked()
    {
        Surroundings stage(true, false);
        stage.clock.advance(hours(1000));
        QVERIFY(stage.worker.commands.empty());
        stage.session->checkForUpdates();
        stage.worker.tell(failure(u"off"_s));
        QCOMPARE(stage.interface.prompt.headline, u"Updates are switched off"_s);
    }

    void packagedCopyNeverChecksByItself()
    {
        Surroundings stage;
        stage.beginWithStatus(statusOf({}, false));
        stage.clock.advance(hours(1000));
        QCOMPARE(stage.worker.names(), QStringList{u"status"_s});
        stage.session->checkForUpdates();
        stage.worker.tell(checkedWith(offer(), false));
        QVERIFY(stage.interface.prompt.text.contains(u"apt"_s));
        QCOMPARE(stage.buttons(), QStringList{u"OK"_s});
    }

    void consentIsAskedOnTheSecondLaunchOnly()
    {
        Surroundings stage(std::nullopt);
        stage.beginWithStatus();
        stage.clock.advance(hours(100));
        QVERIFY(!stage.interface.isOpen);
        QCOMPARE(stage.worker.names(), QStringList{u"status"_s});
        stage.begin();
        stage.beginWithStatus();
        QCOMPARE(stage.buttons(), (QStringList{u"Check Automatically"_s, u"Don’t Check"_s}));
        stage.session->checkForUpdates();
        QCOMPARE(stage.interface.raised, 1);
        stage.interface.act(UpdateAction::AllowAutomatic);
        QVERIFY(!stage.interface.isOpen);
        QCoreApplication::processEvents();
        QCOMPARE(stage.worker.names().last(), u"check"_s);
        stage.begin();
        stage.beginWithStatus();
        QVERIFY(!stage.interface.isOpen);
    }

    void declinedConsentIsKept()
    {
        Surroundings stage(std::nullopt);
        stage.begin();
        stage.beginWithStatus();
        stage.interface.act(UpdateAction::DeclineAutomatic);
        stage.clock.advance(hours(100));
        QVERIFY(!stage.worker.names().contains(u"check"_s));
        QCOMPARE(stage.stateFile().load().automaticChecks, std::optional(false));
    }

    void skippedVersionIsRememberedAndForgottenByTheUsersNextCheck()
    {
        Surroundings stage;
        stage.session->checkForUpdates();
        stage.worker.tell(checkedWith(offer()));
        stage.interface.act(UpdateAction::Skip);
        QCOMPARE(stage.stateFile().load().skippedVersion, u"1.0.1"_s);
        stage.session->checkForUpdates();
        QCOMPARE(stage.worker.lastRequest()[u"skips"_s].toObject()[u"version"_s].toString(), u"1.0.1"_s);
        stage.worker.tell(checkedWith(offer()));
        QVERIFY(stage.stateFile().load().skippedVersion.isEmpty());
    }

    void skippedMajorUpgradeIsRememberedWithItsThreshold()
    {
        Surroundings stage;
        QJsonObject found = offer(u"3.0"_s);
        found[u"major"_s] = true;
        QJsonObject event = checkedWith(found);
        event[u"minimumForAutomatic"_s] = u"2.0"_s;
        stage.session->checkForUpdates();
        stage.worker.tell(event);
        stage.interface.act(UpdateAction::Skip);
        const UpdateState state = stage.stateFile().load();
        QCOMPARE(state.skippedMajorVersion, u"2.0"_s);
        QCOMPARE(state.skippedMajorRelease, u"3.0"_s);
        QVERIFY(state.skippedVersion.isEmpty());
    }

    void highestVersionAndDateAreSentBackAtTheNextCheck()
    {
        Surroundings stage;
        stage.checkInBackground(checkedWith({}));
        stage.session->checkForUpdates();
        QCOMPARE(stage.worker.lastRequest()[u"highestVersionSeen"_s].toString(), u"1.0.1"_s);
        QCOMPARE(stage.worker.lastRequest()[u"newestDateSeen"_s].toString(), u"2026-11-20T10:00:00Z"_s);
    }

    void groupIsDrawnOnceAndAgainAfterAPhasedDownload()
    {
        Surroundings stage;
        const auto group = stage.stateFile().load().group;
        QVERIFY(group != 0);
        QJsonObject found = offer();
        found[u"phased"_s] = true;
        stage.checkInBackground(checkedWith(found));
        QCOMPARE(stage.stateFile().load().group, group);
        stage.worker.tell(kStaged);
        QVERIFY(stage.stateFile().load().group != group);
    }

    void twoWeeksWithoutAGenuineFeedAreTold()
    {
        Surroundings stage;
        stage.checkInBackground(checkedWith({}));
        for (int day = 0; day < 13; ++day) {
            stage.clock.advance(hours(27));
            stage.worker.tell(failure(u"stale"_s));
        }
        QVERIFY(stage.surroundings.notices.size() <= 1);
        stage.clock.advance(hours(27));
        stage.worker.tell(failure(u"stale"_s));
        stage.clock.advance(hours(27));
        stage.worker.tell(failure(u"stale"_s));
        QCOMPARE(stage.surroundings.notices.size(), 1);
        QVERIFY(stage.surroundings.notices.first().contains(u"could not be confirmed"_s));
    }

    void meteredConnectionOnlyDelays()
    {
        Surroundings stage;
        stage.checkInBackground({{u"event"_s, u"metered"_s}});
        QVERIFY(!stage.interface.isOpen);
        stage.clock.advance(hours(2));
        QCOMPARE(stage.worker.names().count(u"check"_s), 2);
    }

    void versionOnTrialReportsHealthAfterTenSeconds()
    {
        Surroundings stage(true, false);
        stage.isOnTrial = true;
        stage.begin();
        stage.clock.advance(seconds(9));
        QVERIFY(stage.worker.commands.empty());
        stage.clock.advance(seconds(1));
        QCOMPARE(stage.worker.names(), QStringList{u"healthy"_s});
    }

    void versionOnTrialThatIsQuitEarlyIsHealthyToo()
    {
        Surroundings stage(true, false);
        stage.isOnTrial = true;
        stage.begin();
        stage.session->applicationQuits();
        QCOMPARE(stage.worker.names(), QStringList{u"healthy"_s});
        QVERIFY(stage.worker.commands.back()->isReleased);
    }

    void pagesAreOpenedForTheUser()
    {
        Surroundings stage;
        QJsonObject found = offer();
        found[u"informational"_s] = true;
        found[u"link"_s] = u"https://example.org/new"_s;
        stage.session->checkForUpdates();
        stage.worker.tell(checkedWith(found));
        stage.interface.act(UpdateAction::OpenPage);
        QCOMPARE(stage.surroundings.pages, QStringList{u"https://example.org/new"_s});
        QVERIFY(!stage.interface.isOpen);
    }

    void endedSessionIsNotTouchedByLateTimers()
    {
        Surroundings stage;
        stage.beginWithStatus();
        stage.session.reset();
        stage.clock.advance(hours(100));
        QCOMPARE(stage.worker.names(), QStringList{u"status"_s});
    }

    void realProcessTellsItsEventsLineByLine()
    {
        const QTemporaryDir folder;
        const QString program = folder.filePath(u"worker"_s);
        QFile script(program);
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write(
            "#!/bin/sh\ncat > \"$0.$1\"\nprintf '{\"event\":\"progress\",\"bytes\":1}\\n{\"event\":'\n"
            "printf '\"staged\"}\\n{\"event\":\"late\"}\\n'\n");
        script.close();
        script.setPermissions(QFile::ReadOwner | QFile::ExeOwner | QFile::WriteOwner);
        ProcessWorker worker(program);
        QStringList events;
        const auto run = worker.start(u"fetch"_s, {{u"a"_s, 1}}, [&events](const QJsonObject& event) {
            events.append(event[u"event"_s].toString());
        });
        QTRY_COMPARE(events, (QStringList{u"progress"_s, u"staged"_s}));
        QFile request(program + u".fetch"_s);
        QVERIFY(request.open(QIODevice::ReadOnly));
        QCOMPARE(request.readAll(), QByteArray("{\"a\":1}"));
    }

    void missingOrCrashingProcessBecomesAFailure()
    {
        for (const QString& program : {u"/no/such/worker"_s, u"/bin/false"_s, u"/bin/true"_s}) {
            ProcessWorker worker(program);
            QJsonObject last;
            const auto run =
                worker.start(u"check"_s, {}, [&last](const QJsonObject& event) { last = event; });
            QTRY_COMPARE(last[u"event"_s].toString(), u"failed"_s);
            QVERIFY(!last[u"sentence"_s].toString().isEmpty());
        }
    }

    void droppedProcessEnds()
    {
        const QTemporaryDir folder;
        const QString program = folder.filePath(u"worker"_s);
        QFile script(program);
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\necho \"{\\\"pid\\\":$$,\\\"event\\\":\\\"progress\\\"}\"\nexec sleep 60\n");
        script.close();
        script.setPermissions(QFile::ReadOwner | QFile::ExeOwner | QFile::WriteOwner);
        ProcessWorker worker(program);
        qint64 pid = 0;
        auto run = worker.start(u"check"_s, {},
                                [&pid](const QJsonObject& event) { pid = event[u"pid"_s].toInteger(); });
        QTRY_VERIFY(pid > 0);
        run.reset();
        QTRY_VERIFY(::kill(static_cast<pid_t>(pid), 0) != 0);
    }
};

FERROBANK_TEST(UpdateSessionTest)
#include "UpdateSessionTest.moc"
