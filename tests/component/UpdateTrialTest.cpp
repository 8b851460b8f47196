#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/Files.h"
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

#include <cerrno>
#include <csignal>
#include <fstream>

using namespace ferrobank;
using namespace ferrobank::updates;
using namespace Qt::StringLiterals;

namespace {

namespace fs = std::filesystem;

InstallPlace placeOf(const UpdateStage& stage)
{
    return InstallPlace::of(fs::canonical(InstallPlace::of(stage.root().toStdString()).stableRoot()));
}

fs::path executableOf(const InstallPlace& place)
{
    return place.stableRoot() / "Contents/Linux/Ferrobank";
}

QJsonObject offerOf(const UpdateStage& stage)
{
    return stage.check().last()[u"offer"_s].toObject();
}

/// Version 1.0.1 is installed, and on trial.
void installNext(UpdateStage& stage)
{
    stage.publish(stage.makeRelease(u"1.0.1"_s));
    QCOMPARE(stage.update().lastEvent(), u"installed"_s);
    QVERIFY(trialAt(placeOf(stage)));
}

/// A start of the installed version that fails behind its first look, as one does that crashes.
std::optional<fs::path> startAndFail(const UpdateStage& stage)
{
    const InstallPlace place = placeOf(stage);
    const auto other = executableToRunInstead(place, executableOf(place));
    if (!other)
        countStart(place);
    return other;
}

QByteArray contentOf(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Takes all the room that the file system of a folder has left.
void fill(const QString& folder)
{
    std::ofstream file((folder + u"/everything"_s).toStdString(), std::ios::binary);
    const std::string block(4096, 'x');
    while (file.write(block.data(), static_cast<std::streamsize>(block.size())).flush()) {
    }
}

} // namespace

/// When a new version is taken back, and when it is not.
class UpdateTrialTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void clicksOnAVersionThatRunsDoNotTakeItBack()
    {
        UpdateStage stage;
        installNext(stage);
        const InstallPlace place = placeOf(stage);
        // A real program in the place of the one that a script stands for: it runs, and has not noted yet
        // that it works.
        fs::copy_file("/bin/sleep", place.root / "Contents/Linux/running");
        QProcess running;
        running.start(QString::fromStdString(place.root / "Contents/Linux/running"), {u"60"_s});
        QVERIFY(running.waitForStarted());
        writeTrial(place, {"1.0.1", "1.0.0", Trial::kMostFailedStarts});
        for (int click = 0; click < 5; ++click)
            QVERIFY(!executableToRunInstead(place, executableOf(place)));
        QCOMPARE(stage.installedVersion().isEmpty(), true); // "running" is not on its list
        QVERIFY(trialAt(place));
        running.kill();
        running.waitForFinished();
        fs::remove(place.root / "Contents/Linux/running");
        QCOMPARE(stage.installedVersion(), u"1.0.1"_s);
        QVERIFY(executableToRunInstead(place, executableOf(place)));
        QCOMPARE(stage.installedVersion(), u"1.0.0"_s);
    }

    void startsThatDoNotBecomeTheRunningProgramCountNothing()
    {
        UpdateStage stage;
        installNext(stage);
        const InstallPlace place = placeOf(stage);
        for (int start = 0; start < 5; ++start)
            QVERIFY(!executableToRunInstead(place, executableOf(place)));
        QCOMPARE(trialAt(place)->starts, 0);
        QCOMPARE(stage.installedVersion(), u"1.0.1"_s);
    }

    void startOfAnotherVersionIsNotCounted()
    {
        UpdateStage stage;
        installNext(stage);
        const InstallPlace place = placeOf(stage);
        writeTrial(place, {"1.0.2", "1.0.1", 0});
        countStart(place);
        QCOMPARE(trialAt(place)->starts, 0);
        countStart(InstallPlace::of("/no/such/place"));
    }

    void versionThatIsTakenBackIsOfferedToTheUserAndByItselfAfterTheBan()
    {
        UpdateStage stage;
        installNext(stage);
        QVERIFY(!startAndFail(stage) && !startAndFail(stage));
        QVERIFY(startAndFail(stage));
        QCOMPARE(stage.installedVersion(), u"1.0.0"_s);
        const QJsonObject status = stage.run(u"status"_s).last()[u"takenBack"_s].toObject();
        QCOMPARE(status[u"version"_s].toString(), u"1.0.1"_s);
        QCOMPARE(status[u"times"_s].toInt(), 1);
        QCOMPARE(stage.check(false).last()[u"reason"_s].toString(), u"takenBack"_s);

        const QJsonObject offered = offerOf(stage);
        QVERIFY(offered[u"takenBack"_s].toBool());
        QCOMPARE(stage.fetch(offered).lastEvent(), u"staged"_s);
        QVERIFY(stage.run(u"status"_s).last().contains(u"staged"_s));
        QCOMPARE(stage.run(u"install"_s).lastEvent(), u"installed"_s);
        QVERIFY(!startAndFail(stage) && !startAndFail(stage));
        QVERIFY(startAndFail(stage));
        QCOMPARE(timesBanned(bansAt(placeOf(stage)), "1.0.1"), 2);
        QVERIFY(!stage.run(u"status"_s).last().contains(u"staged"_s));

        const std::int64_t longAgo = QDateTime::currentSecsSinceEpoch() - 91 * 86'400;
        writeBans(placeOf(stage), {{"1.0.1", 2, longAgo}});
        QCOMPARE(stage.update().lastEvent(), u"installed"_s);
    }

    void banOfAWrongClockEnds()
    {
        UpdateStage stage;
        const std::int64_t now = QDateTime::currentSecsSinceEpoch();
        {
            const StagingLock makesTheFolder(placeOf(stage), std::chrono::milliseconds(0));
        }
        writeBans(placeOf(stage), {{"1.0.1", 1, now + 4000 * 86'400LL}});
        QCOMPARE(stage.run(u"status"_s).lastEvent(), u"status"_s);
        QVERIFY(!isInForce(bansAt(placeOf(stage)).at(0), now + 8 * 86'400));
    }

    void fullDiskDoesNotKeepAVersionFromBeingTakenBack_data()
    {
        QTest::addColumn<bool>("isVersioned");
        QTest::newRow("exchanged folders") << false;
        QTest::newRow("versioned folders") << true;
    }

    void fullDiskDoesNotKeepAVersionFromBeingTakenBack()
    {
        QFETCH(bool, isVersioned);
        UpdateStage stage;
        const QByteArray parent = stage.parent().toUtf8();
        if (::mount("tmpfs", parent.constData(), "tmpfs", 0, "size=80m,mode=0755") != 0)
            QSKIP("This machine does not let us mount.");
        stage.makeRelease(u"1.0.0"_s).installAt(stage.root());
        if (isVersioned)
            stage.useVersionedLayout();
        stage.publish(stage.makeRelease(u"1.0.1"_s));
        const QString installed = stage.update().lastEvent();
        fill(stage.parent());
        const int unwritable = writeFileAtomically(fs::path(stage.parent().toStdString()) / "more", "x");
        const bool ranOnce = !startAndFail(stage);
        const bool ranTwice = !startAndFail(stage);
        const auto other = startAndFail(stage);
        const QString version = stage.installedVersion();
        const int times = timesBanned(bansAt(placeOf(stage)), "1.0.1");
        const bool isDecided = !trialAt(placeOf(stage));
        QCOMPARE(::umount2(parent.constData(), MNT_DETACH), 0);
        QCOMPARE(installed, u"installed"_s);
        QCOMPARE(unwritable, ENOSPC);
        QVERIFY(ranOnce && ranTwice);
        QVERIFY(other);
        QCOMPARE(version, u"1.0.0"_s);
        QCOMPARE(times, 1); // its room was taken at the installation
        QVERIFY(isDecided);
    }

    void noteThatCannotBeWrittenDoesNotKeepAVersionFromBeingTakenBack()
    {
        UpdateStage stage;
        installNext(stage);
        const InstallPlace place = placeOf(stage);
        fs::remove(place.staging() / "bad.ready");
        fs::create_directories(place.staging() / "bad" / "in the way");
        takeBack(place, *trialAt(place), 0);
        QCOMPARE(stage.installedVersion(), u"1.0.0"_s);
        QVERIFY(!trialAt(place));
    }

    void workerThatHangsDoesNotKeepAVersionFromBeingTakenBack()
    {
        UpdateStage stage;
        installNext(stage);
        const StagingLock hanging(placeOf(stage), std::chrono::milliseconds(0));
        QVERIFY(!startAndFail(stage) && !startAndFail(stage));
        QVERIFY(startAndFail(stage));
        QCOMPARE(stage.installedVersion(), u"1.0.0"_s);
    }

    void somethingIsStartedEvenWhenTheVersionCannotBeTakenBack()
    {
        UpdateStage stage;
        TestRelease broken = stage.makeRelease(u"1.0.1"_s);
        broken.setFile("Contents/Linux/Ferrobank",
                       "#!/bin/sh\necho 1.0.1 fails >> \"$RELEASE_LOG\"\nrm -rf "
                       "\"$0/../../../../.Ferrobank.app-update/next\"\n"
                       "rm -rf \"$(dirname \"$0\")/../../../.Ferrobank.app-update/next\"\nexit 3\n",
                       true);
        stage.publish(broken);
        QCOMPARE(stage.fetch(offerOf(stage)).lastEvent(), u"staged"_s);
        QCOMPARE(stage.run(u"install"_s, {{u"relaunch"_s, true}}).lastEvent(), u"installed"_s);
        // The old version is gone, so nothing can be put back; the third start is that of what is there.
        QTRY_COMPARE(contentOf(stage.releaseLog()).count("1.0.1 fails"), 3);
        QCOMPARE(stage.installedVersion(), u"1.0.1"_s);
    }

    void versionThatFindsNoDisplayIsNotTakenBack()
    {
        UpdateStage stage;
        TestRelease release = stage.makeRelease(u"1.0.1"_s);
        release.setFile("Contents/Linux/Ferrobank",
                        "#!/bin/sh\necho 1.0.1 no display >> \"$RELEASE_LOG\"\nexit 1\n", true);
        stage.publish(release);
        QCOMPARE(stage.fetch(offerOf(stage)).lastEvent(), u"staged"_s);
        stage.environment[u"QT_QPA_PLATFORM"_s] = QString();
        stage.environment[u"DISPLAY"_s] = u":97531"_s; // of a session that has ended
        stage.environment[u"WAYLAND_DISPLAY"_s] = QString();
        QCOMPARE(stage.run(u"install"_s, {{u"relaunch"_s, true}}).lastEvent(), u"installed"_s);
        QCOMPARE(contentOf(stage.releaseLog()).count("no display"), 1);
        QCOMPARE(stage.installedVersion(), u"1.0.1"_s);
        QCOMPARE(trialAt(placeOf(stage))->starts, 0); // it is judged when somebody is there
    }

    void relaunchedProgramHasItsSignalsItsErrorsAndNoPipe()
    {
        UpdateStage stage;
        TestRelease release = stage.makeRelease(u"1.0.1"_s);
        release.setFile("Contents/Linux/Ferrobank",
                        "#!/bin/sh\nexec 9> \"$RELEASE_LOG.tmp\"\ngrep SigIgn /proc/$$/status >&9\n"
                        "for i in 0 1 2; do echo \"$(readlink /proc/$$/fd/$i)\" >&9; done\n"
                        "mv \"$RELEASE_LOG.tmp\" \"$RELEASE_LOG\"\n",
                        true);
        stage.publish(release);
        QCOMPARE(stage.fetch(offerOf(stage)).lastEvent(), u"staged"_s);
        QCOMPARE(stage.run(u"install"_s, {{u"relaunch"_s, true}}).lastEvent(), u"installed"_s);
        QTRY_VERIFY(QFile::exists(stage.releaseLog()));
        const QList<QByteArray> lines = contentOf(stage.releaseLog()).trimmed().split('\n');
        QCOMPARE(lines.size(), 4);
        constexpr qulonglong kPipe = 1ULL << (SIGPIPE - 1);
        QCOMPARE(lines[0].split('\t').value(1).toULongLong(nullptr, 16) & kPipe, 0ULL);
        QCOMPARE(lines[1], QByteArray("/dev/null"));
        QCOMPARE(lines[2], lines[3]); // and not the pipe to the worker's reader
        QVERIFY(!lines[3].isEmpty());
    }

    void versionsFolderThatWasLeftEmptyIsFilled_data()
    {
        QTest::addColumn<QString>("left");
        QTest::newRow("empty") << QString();
        QTest::newRow("with an empty bundle") << u"/Ferrobank.app"_s;
        QTest::newRow("with half a bundle") << u"/Ferrobank.app/Contents/Linux"_s;
    }

    void versionsFolderThatWasLeftEmptyIsFilled()
    {
        QFETCH(QString, left);
        UpdateStage stage;
        stage.useVersionedLayout();
        stage.publish(stage.makeRelease(u"1.0.1"_s));
        QCOMPARE(stage.fetch(offerOf(stage)).lastEvent(), u"staged"_s);
        QVERIFY(QDir().mkpath(stage.parent() + u"/versions/1.0.1"_s + left));
        // Whether it is refused or filled: "current" leads to a whole version in any case.
        const QString end = stage.run(u"install"_s).lastEvent();
        QVERIFY(!stage.installedVersion().isEmpty());
        QVERIFY(
            QFileInfo(stage.parent() + u"/current/Ferrobank.app/Contents/Linux/Ferrobank"_s).isExecutable());
        if (left.isEmpty())
            QCOMPARE(end, u"installed"_s);
        if (end != u"installed"_s) {
            stage.publish(stage.makeRelease(u"1.0.1"_s));
            QCOMPARE(stage.update().lastEvent(), u"installed"_s);
        }
        QCOMPARE(stage.installedVersion(), u"1.0.1"_s);
    }

    void versionsThatCannotBeLookedAtDoNotEndTheStatus()
    {
        UpdateStage stage;
        stage.useVersionedLayout();
        {
            const StagingLock makesTheFolder(placeOf(stage), std::chrono::milliseconds(0));
        }
        // What lies behind a link to itself cannot be asked about: that is an error, and not "no".
        const fs::path loop = fs::path(stage.parent().toStdString()) / "versions/loop";
        fs::create_symlink("loop", loop);
        QCOMPARE(stage.run(u"status"_s).lastEvent(), u"status"_s);
    }
};

FERROBANK_TEST(UpdateTrialTest)
#include "UpdateTrialTest.moc"
