#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/Staging.h"
#include "Platform/linux/updates/install/StagingLock.h"
#include "Platform/linux/updates/install/Trial.h"
#include "support/TestProgram.h"
#include "support/updates/UpdateStage.h"

#include <QtCore/QDir>
#include <QtCore/QProcess>
#include <QtTest/QTest>

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace ferrobank;
using namespace ferrobank::updates;
using namespace Qt::StringLiterals;

namespace {

QJsonObject offerOf(const UpdateStage& stage)
{
    return stage.check().last()[u"offer"_s].toObject();
}

QStringList startsOf(const UpdateStage& stage)
{
    QFile file(stage.releaseLog());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
}

InstallPlace placeOf(const UpdateStage& stage)
{
    return InstallPlace::of(stage.root().toStdString());
}

std::filesystem::path executableOf(const InstallPlace& place)
{
    return place.stableRoot() / "Contents/Linux/Ferrobank";
}

void publishNext(UpdateStage& stage)
{
    stage.publish(stage.makeRelease(u"1.0.1"_s));
}

/// Runs a command again and again, killed at its first, second, … step that changes the disk, until it gets
/// to its end. After each death `isSound` is asked.
int killAtEveryStep(UpdateStage& stage, const QString& command, const QJsonObject& more,
                    const std::function<void()>& prepare, const std::function<bool(int)>& isSound)
{
    for (int step = 1; step < 2000; ++step) {
        prepare();
        stage.environment[u"LD_PRELOAD"_s] = faultInjector();
        stage.environment[u"FAULT_KILL_AT"_s] = QString::number(step);
        const WorkerOutcome outcome = stage.run(command, more);
        stage.environment.remove(u"LD_PRELOAD"_s);
        stage.environment.remove(u"FAULT_KILL_AT"_s);
        if (!outcome.crashed)
            return step - 1;
        if (!isSound(step))
            return -step;
    }
    return -1;
}

} // namespace

class UpdateInstallTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void newVersionIsStartedAndTheOldOneKeptUntilItIsHealthy()
    {
        UpdateStage stage;
        publishNext(stage);
        QCOMPARE(stage.fetch(offerOf(stage)).lastEvent(), u"staged"_s);
        QCOMPARE(stage.run(u"install"_s, {{u"relaunch"_s, true}}).lastEvent(), u"installed"_s);
        QCOMPARE(startsOf(stage), QStringList{u"1.0.1 --relaunched-from 1.0.0"_s});
        QCOMPARE(trialAt(placeOf(stage)), std::optional(Trial{"1.0.1", "1.0.0", 0}));
        QVERIFY(QFile::exists(stage.staging() + u"/next/Ferrobank.app/Contents/Info.plist"_s));
        QCOMPARE(stage.run(u"healthy"_s).lastEvent(), u"healthy"_s);
        QVERIFY(!trialAt(placeOf(stage)));
        QCOMPARE(stage.leftovers(), QStringList());
        QCOMPARE(stage.installedVersion(), u"1.0.1"_s);
    }

    void versionedFoldersAreReplacedThroughTheirLink()
    {
        UpdateStage stage;
        stage.useVersionedLayout();
        publishNext(stage);
        QCOMPARE(stage.update().lastEvent(), u"installed"_s);
        QCOMPARE(QFile::symLinkTarget(stage.parent() + u"/current"_s), stage.parent() + u"/versions/1.0.1"_s);
        QCOMPARE(stage.installedVersion(), u"1.0.1"_s);
        QVERIFY(QFile::exists(stage.parent() + u"/versions/1.0.0/Ferrobank.app"_s));
        const QJsonObject next{{u"bundle"_s, stage.parent() + u"/current/Ferrobank.app"_s}};
        QCOMPARE(stage.run(u"healthy"_s, next).lastEvent(), u"healthy"_s);
        QCOMPARE(QDir(stage.parent() + u"/versions"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                 QStringList{u"1.0.1"_s});
    }

    void versionedFoldersNeedNoExchange()
    {
        UpdateStage versioned;
        versioned.useVersionedLayout();
        publishNext(versioned);
        versioned.environment[u"LD_PRELOAD"_s] = faultInjector();
        versioned.environment[u"FAULT_EXCHANGE"_s] = u"1"_s;
        QCOMPARE(versioned.update().lastEvent(), u"installed"_s);
        QCOMPARE(versioned.installedVersion(), u"1.0.1"_s);
    }

    void killedAtEveryStepOfADownloadTheNextOneStillWorks()
    {
        UpdateStage stage;
        publishNext(stage);
        const QJsonObject order{{u"offer"_s, offerOf(stage)}};
        const int steps = killAtEveryStep(
            stage, u"fetch"_s, order, [] {},
            [&stage](int) { return stage.installedVersion() == u"1.0.0"_s; });
        QVERIFY2(steps > 20, qPrintable(QString::number(steps)));
        QCOMPARE(stage.run(u"status"_s).last()[u"staged"_s].toObject()[u"version"_s].toString(), u"1.0.1"_s);
        QCOMPARE(stage.leftovers(), (QStringList{u"next"_s, u"staged.json"_s}));
        QCOMPARE(stage.run(u"install"_s).lastEvent(), u"installed"_s);
    }

    void killedAtAnyStepOfADownloadCleaningUpLeavesNothing()
    {
        UpdateStage stage;
        publishNext(stage);
        const QJsonObject order{{u"offer"_s, offerOf(stage)}};
        const int steps = killAtEveryStep(
            stage, u"fetch"_s, order, [&stage] { QDir(stage.staging()).removeRecursively(); },
            [&stage](int) {
                const WorkerOutcome status = stage.run(u"status"_s);
                QStringList left = stage.leftovers();
                const bool isStaged = status.last().contains(u"staged"_s);
                for (const QString& name : {u"archive.part"_s, u"archive.json"_s})
                    left.removeAll(name);
                return left == (isStaged ? QStringList{u"next"_s, u"staged.json"_s} : QStringList());
            });
        QVERIFY2(steps > 20, qPrintable(QString::number(steps)));
    }

    void powerLostAtAnyStepOfADownloadTheVersionThatWaitsIsWhole()
    {
        UpdateStage stage;
        publishNext(stage);
        const QJsonObject order{{u"offer"_s, offerOf(stage)}};
        stage.environment[u"FAULT_POWER"_s] = u"1"_s;
        int waited = 0;
        const int steps = killAtEveryStep(
            stage, u"fetch"_s, order, [&stage] { QDir(stage.staging()).removeRecursively(); },
            [&](int) {
                stage.environment.remove(u"FAULT_POWER"_s);
                const bool isStaged = stage.run(u"status"_s).last().contains(u"staged"_s);
                // What was not forced to the disk before it was said to wait would be missing here.
                const bool isGood = !isStaged || stage.run(u"install"_s).lastEvent() == u"installed"_s;
                const bool isWhole = stage.installedVersion() == (isStaged ? u"1.0.1"_s : u"1.0.0"_s);
                if (isStaged) {
                    ++waited;
                    QDir(stage.root()).removeRecursively();
                    stage.makeRelease(u"1.0.0"_s).installAt(stage.root());
                }
                stage.environment[u"FAULT_POWER"_s] = u"1"_s;
                return isGood && isWhole;
            });
        QVERIFY2(steps > 20, qPrintable(QString::number(steps)));
        QVERIFY(waited > 0);
    }

    void killedAtEveryStepOfAnInstallationOneVersionIsWhole_data()
    {
        QTest::addColumn<bool>("isVersioned");
        QTest::addColumn<bool>("isPowerLost");
        QTest::newRow("exchanged folders") << false << false;
        QTest::newRow("versioned folders") << true << false;
        QTest::newRow("exchanged folders, power lost") << false << true;
        QTest::newRow("versioned folders, power lost") << true << true;
    }

    void killedAtEveryStepOfAnInstallationOneVersionIsWhole()
    {
        QFETCH(bool, isVersioned);
        QFETCH(bool, isPowerLost);
        std::unique_ptr<UpdateStage> stage;
        int sawOld = 0;
        int sawNew = 0;
        for (int step = 1; step < 200; ++step) {
            stage = std::make_unique<UpdateStage>();
            if (isVersioned)
                stage->useVersionedLayout();
            publishNext(*stage);
            QCOMPARE(stage->fetch(offerOf(*stage)).lastEvent(), u"staged"_s);
            stage->environment[u"LD_PRELOAD"_s] = faultInjector();
            stage->environment[u"FAULT_KILL_AT"_s] = QString::number(step);
            if (isPowerLost)
                stage->environment[u"FAULT_POWER"_s] = u"1"_s;
            const WorkerOutcome outcome = stage->run(u"install"_s);
            stage->environment.remove(u"LD_PRELOAD"_s);
            const QString version = stage->installedVersion();
            if (!outcome.crashed) {
                QCOMPARE(version, u"1.0.1"_s);
                break;
            }
            const bool isOld = version == u"1.0.0"_s;
            QVERIFY2(isOld || version == u"1.0.1"_s, qPrintable(QString::number(step)));
            isOld ? ++sawOld : ++sawNew;
            // What the executable does at its next start, and then a second attempt.
            const InstallPlace place =
                InstallPlace::of(std::filesystem::canonical(placeOf(*stage).stableRoot()));
            std::ignore = executableToRunInstead(place, executableOf(place));
            const QJsonObject bundle{{u"bundle"_s, QString::fromStdString(place.root)}};
            if (isOld)
                QCOMPARE(stage->run(u"install"_s, bundle).lastEvent(), u"installed"_s);
            else
                QCOMPARE(stage->run(u"healthy"_s, bundle).lastEvent(), u"healthy"_s);
            QCOMPARE(stage->installedVersion(), u"1.0.1"_s);
        }
        QVERIFY(sawOld > 2 && sawNew > 0);
    }

    void versionThatFailsTwiceIsTakenBackAndNotOfferedAgain()
    {
        UpdateStage stage;
        TestRelease broken = stage.makeRelease(u"1.0.1"_s);
        broken.setFile("Contents/Linux/Ferrobank",
                       "#!/bin/sh\necho 1.0.1 fails >> \"$RELEASE_LOG\"\nexit 3\n", true);
        stage.publish(broken);
        QCOMPARE(stage.fetch(offerOf(stage)).lastEvent(), u"staged"_s);
        QCOMPARE(stage.run(u"install"_s, {{u"relaunch"_s, true}}).lastEvent(), u"installed"_s);
        QTRY_COMPARE(startsOf(stage),
                     (QStringList{u"1.0.1 fails"_s, u"1.0.1 fails"_s, u"1.0.0 --relaunched-from 1.0.0"_s}));
        QCOMPARE(stage.installedVersion(), u"1.0.0"_s);
        QCOMPARE(timesBanned(bansAt(placeOf(stage)), "1.0.1"), 1);
        const QJsonObject scheduled = stage.check(false).last();
        QVERIFY(!scheduled.contains(u"offer"_s));
        QCOMPARE(scheduled[u"reason"_s].toString(), u"takenBack"_s);
        QCOMPARE(stage.run(u"status"_s).lastEvent(), u"status"_s);
        QCOMPARE(stage.leftovers(), QStringList());
        stage.publish(stage.makeRelease(u"1.0.2"_s));
        QCOMPARE(stage.update().lastEvent(), u"installed"_s);
    }

    void launcherTakesAVersionBackAfterTwoFailedStarts()
    {
        UpdateStage stage;
        publishNext(stage);
        QCOMPARE(stage.update().lastEvent(), u"installed"_s);
        const InstallPlace place = placeOf(stage);
        for (const int starts : {1, 2}) {
            QVERIFY(!executableToRunInstead(place, executableOf(place)));
            countStart(place);
            QCOMPARE(trialAt(place)->starts, starts);
            QCOMPARE(stage.installedVersion(), u"1.0.1"_s);
        }
        const auto other = executableToRunInstead(place, executableOf(place));
        QCOMPARE(other, std::optional(place.root / "Contents/Linux/Ferrobank"));
        QCOMPARE(stage.installedVersion(), u"1.0.0"_s);
        QVERIFY(!trialAt(place));
    }

    void launcherWithoutATrialDoesNothing()
    {
        UpdateStage stage;
        QVERIFY(!executableToRunInstead(placeOf(stage), executableOf(placeOf(stage))));
        QVERIFY(!QFile::exists(stage.staging()));
    }

    void damagedTrialIsForgotten()
    {
        UpdateStage stage;
        publishNext(stage);
        QCOMPARE(stage.fetch(offerOf(stage)).lastEvent(), u"staged"_s);
        QFile trial(stage.staging() + u"/trial"_s);
        QVERIFY(trial.open(QIODevice::WriteOnly) && trial.write("rubbish") > 0);
        trial.close();
        std::ignore = executableToRunInstead(placeOf(stage), executableOf(placeOf(stage)));
        QVERIFY(!trial.exists());
        QCOMPARE(stage.installedVersion(), u"1.0.0"_s);
    }

    void installationWaitsForTheApplicationToEnd()
    {
        UpdateStage stage;
        publishNext(stage);
        QCOMPARE(stage.fetch(offerOf(stage)).lastEvent(), u"staged"_s);
        QProcess application;
        application.start(u"sleep"_s, {u"30"_s});
        QVERIFY(application.waitForStarted());
        QJsonObject request = stage.request();
        request[u"pid"_s] = application.processId();
        bool wasOldWhileWaiting = false;
        const WorkerOutcome outcome =
            runWorker(u"install"_s, request, stage.environment, [&](QProcess& worker) {
                QVERIFY(worker.waitForReadyRead(20'000));
                wasOldWhileWaiting = stage.installedVersion() == u"1.0.0"_s;
                application.kill();
                application.waitForFinished();
            });
        QVERIFY(wasOldWhileWaiting);
        QCOMPARE(outcome.events.first()[u"event"_s].toString(), u"waiting"_s);
        QCOMPARE(outcome.lastEvent(), u"installed"_s);
        QCOMPARE(stage.installedVersion(), u"1.0.1"_s);
    }

    void stagedVersionThatWasChangedIsNotInstalled()
    {
        UpdateStage stage;
        publishNext(stage);
        QCOMPARE(stage.fetch(offerOf(stage)).lastEvent(), u"staged"_s);
        QFile file(stage.staging() + u"/next/Ferrobank.app/Contents/Linux/libferrobank-app.so"_s);
        QVERIFY(file.open(QIODevice::ReadWrite) && file.write("changed") > 0);
        file.close();
        QCOMPARE(stage.run(u"install"_s).problem(), u"archive"_s);
        QCOMPARE(stage.installedVersion(), u"1.0.0"_s);
        QCOMPARE(stage.leftovers(), QStringList());
    }

    void nothingStagedIsToldAndHarmless()
    {
        UpdateStage stage;
        QCOMPARE(stage.run(u"install"_s).problem(), u"install"_s);
        QCOMPARE(stage.installedVersion(), u"1.0.0"_s);
    }

    void secondProcessGivesUpWhileTheFirstWorks()
    {
        UpdateStage stage;
        ServedFile slow;
        slow.content = stage.makeRelease(u"1.0.1"_s).archive();
        stage.publishArchive(u"1.0.1"_s, slow.content);
        const QJsonObject offer = offerOf(stage);
        const StagingLock first(placeOf(stage), std::chrono::milliseconds(0));
        QCOMPARE(stage.fetch(offer).problem(), u"busy"_s);
        QCOMPARE(stage.run(u"status"_s).lastEvent(), u"status"_s);
        QVERIFY_THROWS_EXCEPTION(UpdateFailure, StagingLock(placeOf(stage), std::chrono::milliseconds(10)));
    }

    void twoAtOnceInstallOnce()
    {
        UpdateStage stage;
        ServedFile slow;
        TestRelease release = stage.makeRelease(u"1.0.1"_s);
        QByteArray noise(600'000, '\0'); // what does not get smaller takes its time on the way
        for (qsizetype i = 0; i < noise.size(); ++i)
            noise[i] = static_cast<char>((i * 2654435761U) >> 13);
        release.setFile("Contents/Linux/libferrobank-window.so", noise);
        slow.content = release.archive();
        stage.publishArchive(u"1.0.1"_s, slow.content);
        slow.chunkPause = 30;
        stage.server.serve(u"/Ferrobank_1.0.1.tar.zst"_s, slow);
        QJsonObject request = stage.request();
        request[u"offer"_s] = offerOf(stage);
        WorkerOutcome second;
        bool wasUnderWay = false;
        const WorkerOutcome first = runWorker(u"fetch"_s, request, stage.environment, [&](QProcess& worker) {
            // The second begins once the first has told of bytes, and ends while it still downloads.
            wasUnderWay = QTest::qWaitFor([&] { return worker.bytesAvailable() > 0; }, 30'000);
            second = stage.fetch(request[u"offer"_s].toObject());
            wasUnderWay = wasUnderWay && worker.state() == QProcess::Running;
        });
        QVERIFY(wasUnderWay);
        QCOMPARE(first.lastEvent(), u"staged"_s);
        QCOMPARE(second.problem(), u"busy"_s);
        QCOMPARE(stage.server.requestsFor("/Ferrobank_1.0.1.tar.zst"), 1);

        // The same for the installation: the first waits for the application to end, with both rights.
        QProcess application;
        application.start(u"sleep"_s, {u"60"_s});
        QVERIFY(application.waitForStarted());
        request[u"pid"_s] = application.processId();
        const WorkerOutcome installed =
            runWorker(u"install"_s, request, stage.environment, [&](QProcess& worker) {
                QVERIFY(QTest::qWaitFor([&] { return worker.bytesAvailable() > 0; }, 30'000));
                second = stage.run(u"install"_s);
                application.kill();
                application.waitForFinished();
            });
        QCOMPARE(installed.lastEvent(), u"installed"_s);
        QCOMPARE(second.problem(), u"busy"_s);
        QCOMPARE(stage.run(u"install"_s).lastEvent(), u"failed"_s);
        QCOMPARE(stage.installedVersion(), u"1.0.1"_s);
    }

    void foreignStagingFolderIsRefused()
    {
        UpdateStage stage;
        publishNext(stage);
        const QJsonObject offer = offerOf(stage);
        const QString elsewhere = stage.parent() + u"/elsewhere"_s;
        QDir().mkpath(elsewhere);
        QFile::link(elsewhere, stage.staging());
        QCOMPARE(stage.fetch(offer).problem(), u"place"_s);
        QVERIFY(QDir(elsewhere).isEmpty());
        QFile::remove(stage.staging());
        QDir().mkpath(stage.staging());
        ::chmod(stage.staging().toUtf8().constData(), 0777);
        QCOMPARE(stage.fetch(offer).problem(), u"place"_s);
    }

    void partialDownloadThatIsALinkIsNotWrittenThrough()
    {
        UpdateStage stage;
        publishNext(stage);
        const QString victim = stage.parent() + u"/victim"_s;
        QFile file(victim);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("precious") > 0);
        file.close();
        QDir().mkpath(stage.staging());
        ::chmod(stage.staging().toUtf8().constData(), 0700);
        QFile::link(victim, stage.staging() + u"/archive.part"_s);
        QCOMPARE(stage.update().lastEvent(), u"installed"_s);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("precious"));
    }

    void diskThatFillsUpInAnyPhaseLeavesTheVersionInPlaceAndNoRubbish()
    {
        UpdateStage stage;
        publishNext(stage);
        const QJsonObject offer = offerOf(stage);
        int failures = 0;
        for (int step = 1; step < 500; ++step) {
            stage.environment[u"LD_PRELOAD"_s] = faultInjector();
            stage.environment[u"FAULT_FULL_AT"_s] = QString::number(step);
            const WorkerOutcome outcome = stage.fetch(offer);
            stage.environment.remove(u"LD_PRELOAD"_s);
            if (outcome.lastEvent() == u"staged"_s)
                break;
            ++failures;
            QVERIFY2(outcome.problem() == u"space"_s, qPrintable(outcome.problem() + QString::number(step)));
            QCOMPARE(stage.leftovers(), QStringList());
            QCOMPARE(stage.installedVersion(), u"1.0.0"_s);
        }
        QVERIFY(failures > 10);
        stage.environment[u"LD_PRELOAD"_s] = faultInjector();
        stage.environment[u"FAULT_FULL_AT"_s] = u"1"_s;
        QCOMPARE(stage.run(u"install"_s).problem(), u"space"_s);
        QCOMPARE(stage.installedVersion(), u"1.0.0"_s);
        stage.environment.remove(u"LD_PRELOAD"_s);
        QCOMPARE(stage.run(u"install"_s).lastEvent(), u"installed"_s);
    }

    void smallDiskIsToldBeforeTheDownload()
    {
        UpdateStage stage;
        const QByteArray parent = stage.parent().toUtf8();
        if (::mount("tmpfs", parent.constData(), "tmpfs", 0, "size=8m,mode=0755") != 0)
            QSKIP("This machine does not let us mount.");
        stage.makeRelease(u"1.0.0"_s).installAt(stage.root());
        publishNext(stage);
        const WorkerOutcome outcome = stage.fetch(offerOf(stage));
        const QString version = stage.installedVersion();
        const QStringList leftovers = stage.leftovers();
        QCOMPARE(::umount(parent.constData()), 0);
        QCOMPARE(outcome.problem(), u"space"_s);
        QVERIFY(outcome.last()[u"sentence"_s].toString().contains(u"MB are needed"_s));
        QCOMPARE(version, u"1.0.0"_s);
        QCOMPARE(leftovers, QStringList());
    }

    void buildWithoutAFeedSaysThatUpdatesAreOff()
    {
        UpdateStage stage;
        QFile list(stage.root() + u"/Contents/Info.plist"_s);
        QVERIFY(list.open(QIODevice::WriteOnly));
        list.write(
            "<plist version=\"1.0\"><dict><key>CFBundleVersion</key><string>1.0.0</string></dict></plist>");
        list.close();
        const WorkerOutcome outcome = stage.check();
        QCOMPARE(outcome.problem(), u"off"_s);
        QVERIFY(outcome.last()[u"sentence"_s].toString().contains(u"without an address"_s));
        QCOMPARE(stage.run(u"status"_s).last()[u"on"_s].toBool(), false);
    }

    void badRequestsAreRefused()
    {
        QCOMPARE(runWorker(u"check"_s, {}).problem(), u"place"_s);
        QCOMPARE(runWorker(u"status"_s, {{u"bundle"_s, u"/no/such/folder"_s}}).problem(), u"place"_s);
        QCOMPARE(runWorker(u"dance"_s, {}).exitCode, 2);
    }
};

FERROBANK_TEST(UpdateInstallTest)
#include "UpdateInstallTest.moc"
