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

/// Keeps the state as the file does, as text, without the disk.
class MemoryStates final : public UpdateStateStore {
public:
    [[nodiscard]] UpdateState load() const override { return readState(_text); }

    bool save(const UpdateState& state) override
    {
        _text = stateText(state);
        return true;
    }

private:
    QByteArray _text;
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
        clock.jumpWall(hours(24 * 365 * 7)); // behind the dates of the feeds below, as a clock should be
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
            .states = states,
            .quit = [this] { ++quits; },
            .isOnTrial = [this] { return isOnTrial; },
            .versionInPlace = [this] { return inPlace; },
            .random = [this] { return random; },
        });
        session->start();
    }

    [[nodiscard]] const MemoryStates& stateFile() const { return states; }

    /// Lets time pass, and answers every command of the worker as it comes.
    void live(std::chrono::hours span, const std::function<QJsonObject(const QString&)>& answer)
    {
        for (hours passed{0}; passed < span; passed += hours(1)) {
            clock.advance(hours(1));
            settle(answer);
        }
    }

    void settle(const std::function<QJsonObject(const QString&)>& answer)
    {
        QCoreApplication::processEvents();
        while (answered < worker.commands.size()) {
            const QString name = worker.commands[answered++]->name;
            worker.tell(answer(name));
            QCoreApplication::processEvents();
        }
    }

    [[nodiscard]] qsizetype count(const QString& command) const { return worker.names().count(command); }

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

    MemoryStates states;
    UpdateConfiguration configuration;
    std::uint32_t random = 1000; ///< no jitter
    std::size_t answered = 0;
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
        int checks = 1;
        for (const int pause : {1, 2, 4, 8, 16, 24, 24}) {
            stage.clock.advance(hours(pause) - seconds(1));
            QCOMPARE(stage.count(u"check"_s), checks);
            stage.clock.advance(seconds(1));
            QCOMPARE(stage.count(u"check"_s), ++checks);
            stage.worker.tell(failure(u"network"_s));
        }
        QVERIFY(!stage.interface.isOpen && stage.surroundings.notices.isEmpty());
    }

    void refusedArchiveIsDownloadedDailyAndThenWeekly_data()
    {
        QTest::addColumn<QString>("problem");
        for (const char* problem : {"signature", "version", "archive", "install"})
            QTest::newRow(problem) << QString::fromLatin1(problem);
    }

    void refusedArchiveIsDownloadedDailyAndThenWeekly()
    {
        QFETCH(QString, problem);
        Surroundings stage;
        const auto answer = [&problem](const QString& command) {
            return command == u"status"_s  ? statusOf()
                   : command == u"check"_s ? checkedWith(offer())
                                           : failure(problem);
        };
        stage.live(hours(24 * 60), answer);
        // Three days, and then once a week for the eight that are left.
        QVERIFY2(stage.count(u"fetch"_s) >= 10 && stage.count(u"fetch"_s) <= 13,
                 qPrintable(QString::number(stage.count(u"fetch"_s))));
        // The feed itself is looked at as always, so that a better archive is found at once.
        QVERIFY(stage.count(u"check"_s) >= 58 && stage.count(u"check"_s) <= 62);
    }

    void anotherArchiveOfARefusedVersionIsTriedAtOnce()
    {
        Surroundings stage;
        stage.checkInBackground(checkedWith(offer()));
        stage.worker.tell(failure(u"signature"_s));
        stage.clock.advance(hours(1));
        QCOMPARE(stage.count(u"check"_s), 1);
        stage.session->checkForUpdates();
        stage.interface.act(UpdateAction::Cancel);
        QJsonObject again = offer();
        again[u"signature"_s] = u"of another archive"_s;
        stage.clock.advance(hours(24));
        stage.worker.tell(checkedWith(again));
        QCOMPARE(stage.worker.names().last(), u"fetch"_s);
    }

    void downloadThatStopsOnTheWayBacksOffToADay()
    {
        Surroundings stage;
        const auto answer = [](const QString& command) {
            return command == u"status"_s  ? statusOf()
                   : command == u"check"_s ? checkedWith(offer())
                                           : failure(u"network"_s);
        };
        stage.live(hours(24 * 10), answer);
        QVERIFY2(stage.count(u"fetch"_s) <= 15, qPrintable(QString::number(stage.count(u"fetch"_s))));
        QVERIFY(stage.count(u"fetch"_s) >= 10);
    }

    void userMayTryARefusedUpdateAtOnce()
    {
        Surroundings stage;
        stage.checkInBackground(checkedWith(offer()));
        stage.worker.tell(failure(u"archive"_s));
        stage.session->checkForUpdates();
        stage.worker.tell(checkedWith(offer()));
        stage.interface.act(UpdateAction::Install);
        QCOMPARE(stage.worker.names().last(), u"fetch"_s);
    }

    void installationThatFailedWithNobodyToHearItIsCounted()
    {
        Surroundings stage;
        stage.checkInBackground(checkedWith(offer()));
        stage.worker.tell(kStaged);
        stage.session->applicationQuits();
        QCOMPARE(stage.stateFile().load().installing, u"1.0.1"_s);
        stage.begin();
        stage.beginWithStatus(); // the same version runs, and nothing waits any more
        QVERIFY(stage.stateFile().load().installing.isEmpty());
        QCOMPARE(stage.stateFile().load().failedOffers.size(), 1);
        stage.clock.advance(hours(12));
        stage.session->checkForUpdates();
        stage.interface.act(UpdateAction::Cancel);
        // One that was installed is none.
        stage.configuration.version = stage.inPlace = u"1.0.1"_s;
        stage.begin();
        stage.beginWithStatus();
        QVERIFY(stage.stateFile().load().failedOffers.isEmpty());
    }

    void wrongClockAtOneStartDoesNotStopTheChecks()
    {
        Surroundings stage;
        // Four years ahead for one start, which checks and remembers when.
        stage.clock.jumpWall(hours(24 * 365 * 4));
        stage.begin();
        stage.checkInBackground(checkedWith({}));
        stage.session.reset();
        stage.clock.jumpWall(hours(-24 * 365 * 4));
        const auto before = stage.count(u"check"_s);
        // Then the computer runs for some hours a day, as many do.
        for (int day = 0; day < 4; ++day) {
            stage.begin();
            stage.beginWithStatus();
            QCoreApplication::processEvents();
            stage.clock.advance(hours(8));
            stage.session.reset();
            stage.clock.advance(hours(16));
        }
        QVERIFY2(stage.count(u"check"_s) - before >= 2,
                 qPrintable(QString::number(stage.count(u"check"_s) - before)));
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
        stage.random = 77;
        stage.worker.tell(kStaged);
        QVERIFY(stage.stateFile().load().group != group);
    }

    void everyWayOfNotBeingUpdatedIsToldAfterAFortnight_data()
    {
        QTest::addColumn<QJsonObject>("checked");
        QTest::addColumn<QJsonObject>("fetched");
        QTest::addColumn<QString>("words");
        const QJsonObject offered = checkedWith(offer());
        QJsonObject old = checkedWith({});
        old[u"reason"_s] = u"systemTooOld"_s;
        old[u"latest"_s] = u"1.0.1"_s;
        QJsonObject takenBack = old;
        takenBack[u"reason"_s] = u"takenBack"_s;
        const auto row = [](const char* name, const QJsonObject& checked, const QJsonObject& fetched,
                            const QString& words) { QTest::newRow(name) << checked << fetched << words; };
        row("no network", failure(u"network"_s), {}, u"could not look for updates"_s);
        row("stale feed", failure(u"stale"_s), {}, u"could not be confirmed"_s);
        row("forged feed", failure(u"signature"_s), {}, u"could not be confirmed"_s);
        row("unreadable feed", failure(u"feed"_s), {}, u"could not be confirmed"_s);
        row("damaged keys", failure(u"off"_s), {}, u"could not look for updates"_s);
        row("paid by volume", {{u"event"_s, u"metered"_s}}, {}, u"paid by volume"_s);
        row("refused archive", offered, failure(u"signature"_s), u"could not be installed"_s);
        row("does not start", offered, failure(u"install"_s), u"could not be installed"_s);
        row("download breaks", offered, failure(u"network"_s), u"could not be installed"_s);
        row("full disk", offered, failure(u"space"_s), u"could not be installed"_s);
        row("another one works", offered, failure(u"busy"_s), u"could not be installed"_s);
        row("old system", old, {}, u"needs a newer system"_s);
        row("taken back", takenBack, {}, u"was taken back"_s);
    }

    void everyWayOfNotBeingUpdatedIsToldAfterAFortnight()
    {
        QFETCH(QJsonObject, checked);
        QFETCH(QJsonObject, fetched);
        QFETCH(QString, words);
        Surroundings stage; // which has never seen a genuine feed
        const auto answer = [&](const QString& command) {
            return command == u"status"_s ? statusOf() : command == u"check"_s ? checked : fetched;
        };
        stage.live(hours(24 * 14 - 2), answer);
        QVERIFY2(stage.surroundings.notices.isEmpty(), qPrintable(stage.surroundings.notices.join(u' ')));
        stage.live(hours(24 * 4), answer);
        QCOMPARE(stage.surroundings.notices.size(), 1);
        QVERIFY2(stage.surroundings.notices[0].contains(words), qPrintable(stage.surroundings.notices[0]));
        QVERIFY(!stage.interface.isOpen);
        stage.live(hours(24 * 9), answer);
        QCOMPARE(stage.surroundings.notices.size(), 1); // once in a fortnight
        stage.live(hours(24 * 8), answer);
        QCOMPARE(stage.surroundings.notices.size(), 2);
    }

    void copyThatIsUpToDateOrOffForLongHearsNothing()
    {
        Surroundings stage;
        bool isOnline = true;
        const auto answer = [&](const QString& command) {
            return command == u"status"_s ? statusOf() : isOnline ? checkedWith({}) : failure(u"network"_s);
        };
        stage.live(hours(24 * 30), answer);
        stage.session.reset();
        stage.clock.advance(hours(24 * 40)); // switched off
        stage.begin();
        isOnline = false; // the network comes a little later than the program
        stage.live(hours(5), answer);
        isOnline = true;
        stage.live(hours(24 * 20), answer);
        QVERIFY2(stage.surroundings.notices.isEmpty(), qPrintable(stage.surroundings.notices.join(u' ')));
    }

    void statusThatCannotBeHadDoesNotEndTheChecks()
    {
        Surroundings stage;
        stage.beginWithStatus(failure(u"install"_s));
        QCoreApplication::processEvents();
        QCOMPARE(stage.worker.names().last(), u"check"_s);
    }

    void folderCopyThatCannotReplaceItselfStillTellsOfNewVersions()
    {
        Surroundings stage;
        QJsonObject place{{u"mayReplace"_s, false}, {u"isFolder"_s, true}, {u"sentence"_s, u"Read-only."_s}};
        QJsonObject found = checkedWith(offer(), false);
        found[u"place"_s] = place;
        stage.beginWithStatus({{u"event"_s, u"status"_s}, {u"place"_s, place}});
        QCoreApplication::processEvents();
        stage.worker.tell(found);
        QCOMPARE(stage.surroundings.notices.size(), 1);
        QVERIFY(stage.surroundings.notices[0].contains(u"1.0.1 is available"_s));
        QVERIFY(!stage.worker.names().contains(u"fetch"_s));
    }

    void versionThatWasTakenBackIsToldOnceForEachFailure()
    {
        Surroundings stage;
        QJsonObject status = statusOf();
        const auto takenBack = [](int times) {
            return QJsonObject{
                {u"version"_s, u"1.0.1"_s}, {u"times"_s, times}, {u"until"_s, u"2026-11-29T10:00:00Z"_s}};
        };
        status[u"takenBack"_s] = takenBack(1);
        stage.beginWithStatus(status);
        QCOMPARE(stage.surroundings.notices.size(), 1);
        QVERIFY(stage.surroundings.notices[0].contains(u"1.0.1 was taken back"_s));
        stage.begin();
        stage.beginWithStatus(status);
        QCOMPARE(stage.surroundings.notices.size(), 1);
        status[u"takenBack"_s] = takenBack(2);
        stage.begin();
        stage.beginWithStatus(status);
        QCOMPARE(stage.surroundings.notices.size(), 2);
    }

    void versionThatWasTakenBackIsOfferedAgainInWords()
    {
        Surroundings stage;
        QJsonObject found = offer();
        found[u"takenBack"_s] = true;
        stage.session->checkForUpdates();
        stage.worker.tell(checkedWith(found));
        QVERIFY(stage.interface.prompt.text.contains(u"did not start, and was taken back"_s));
        QCOMPARE(stage.buttons().first(), u"Install Update"_s);
    }

    void olderVersionInThePlaceIsNoUpdate()
    {
        Surroundings stage;
        stage.configuration.version = u"1.0.1"_s;
        stage.inPlace = u"1.0.1"_s;
        stage.begin();
        stage.beginWithStatus();
        stage.inPlace = u"1.0.0"_s;
        stage.session->bundleChanged();
        QCOMPARE(stage.surroundings.notices.size(), 1);
        QVERIFY(!stage.surroundings.notices[0].contains(u"was updated"_s));
        QVERIFY(stage.surroundings.notices[0].contains(u"older"_s));
        stage.session->checkForUpdates();
        QCOMPARE(stage.interface.prompt.headline, u"An older Ferrobank is installed"_s);
    }

    void healthIsReportedAgainUntilItIsNoted()
    {
        Surroundings stage(true, false);
        stage.isOnTrial = true;
        stage.begin();
        stage.clock.advance(seconds(10));
        QCOMPARE(stage.count(u"healthy"_s), 1);
        for (const int minutes : {1, 2, 4, 8, 16, 32, 60, 60}) {
            stage.worker.tell(failure(u"busy"_s));
            const auto before = stage.count(u"healthy"_s);
            stage.clock.advance(std::chrono::minutes(minutes) - seconds(1));
            QCOMPARE(stage.count(u"healthy"_s), before);
            stage.clock.advance(seconds(1));
            QCOMPARE(stage.count(u"healthy"_s), before + 1);
        }
        stage.worker.tell({{u"event"_s, u"healthy"_s}});
        const auto last = stage.count(u"healthy"_s);
        stage.clock.advance(hours(5));
        QCOMPARE(stage.count(u"healthy"_s), last);
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
