#include "Platform/Bundle.h"
#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/SideBySide.h"
#include "Platform/linux/updates/install/StagingLock.h"
#include "Platform/linux/updates/install/Swap.h"
#include "Platform/linux/updates/install/Trial.h"
#include "support/TestProgram.h"
#include "support/updates/UpdateStage.h"

#include <QtCore/QDir>
#include <QtCore/QProcess>
#include <QtTest/QTest>

#include <sys/mount.h>
#include <unistd.h>

using namespace ferrobank;
using namespace ferrobank::updates;
using namespace Qt::StringLiterals;

namespace {

namespace fs = std::filesystem;

/// The product's build dies at every step. The others, made to try the compiler and the memory, at some.
#ifdef QT_NO_DEBUG
constexpr int kStepsBetweenKills = 1;
#else
constexpr int kStepsBetweenKills = 7;
#endif

/// A copy in one folder, on a file system that cannot exchange two of them.
class PlainStage : public UpdateStage {
public:
    PlainStage()
    {
        TestRelease release = makeRelease(u"1.0.0"_s);
        setTool(release);
        QDir(root()).removeRecursively();
        release.installAt(root());
        environment[u"LD_PRELOAD"_s] = faultInjector();
        environment[u"FAULT_EXCHANGE"_s] = u"1"_s;
    }

    /// The tool tells its version, so that a test sees which one a path leads to.
    static void setTool(TestRelease& release)
    {
        const QByteArray text = "#!/bin/sh\necho tool " + release.version().toUtf8() + "\n";
        release.setFile("Contents/Helpers/ferrobank", text, true);
    }

    void publishVersion(const QString& version)
    {
        TestRelease release = makeRelease(version);
        setTool(release);
        publish(release);
    }

    [[nodiscard]] QJsonObject offer() const { return check().last()[u"offer"_s].toObject(); }

    [[nodiscard]] QString toolAnswer() const
    {
        QProcess tool;
        tool.start(root() + u"/Contents/Helpers/ferrobank"_s, QStringList());
        tool.waitForFinished();
        return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
    }

    /// What the program at the path known outside says of itself, or nothing when it does not start.
    [[nodiscard]] QString programAnswer() const
    {
        QFile::remove(releaseLog());
        QProcess program;
        program.setProcessEnvironment([this] {
            auto variables = QProcessEnvironment::systemEnvironment();
            variables.insert(u"RELEASE_LOG"_s, releaseLog());
            return variables;
        }());
        program.start(root() + u"/Contents/Linux/Ferrobank"_s, QStringList());
        program.waitForFinished();
        QFile log(releaseLog());
        return log.open(QIODevice::ReadOnly) ? QString::fromUtf8(log.readAll()).trimmed() : QString();
    }
};

} // namespace

class UpdateSideBySideTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void updateArrivesWhereFoldersCannotBeExchangedAndThePathStaysTheSame()
    {
        PlainStage stage;
        stage.publishVersion(u"1.0.1"_s);
        QCOMPARE(stage.fetch(stage.offer()).lastEvent(), u"staged"_s);
        QCOMPARE(stage.programAnswer(), u"1.0.0"_s);
        QCOMPARE(stage.run(u"install"_s).lastEvent(), u"installed"_s);
        QCOMPARE(stage.installedVersion(), u"1.0.1"_s);
        QCOMPARE(stage.programAnswer(), u"1.0.1"_s);
        QCOMPARE(stage.toolAnswer(), u"tool 1.0.1"_s);
        QCOMPARE(stage.run(u"healthy"_s).lastEvent(), u"healthy"_s);
        QCOMPARE(stage.programAnswer(), u"1.0.1"_s);
    }

    void laterUpdatesGoTheSameWay()
    {
        PlainStage stage;
        for (const QString& version : {u"1.0.1"_s, u"1.0.2"_s, u"1.0.3"_s}) {
            stage.publishVersion(version);
            QCOMPARE(stage.update().lastEvent(), u"installed"_s);
            QCOMPARE(stage.run(u"healthy"_s).lastEvent(), u"healthy"_s);
            QCOMPARE(stage.programAnswer(), version);
        }
        const QString versions = stage.parent() + u"/.Ferrobank.app-versions/versions"_s;
        QCOMPARE(QDir(versions).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"1.0.3"_s});
    }

    void formerFolderIsTidiedOnceNothingRunsFromItAndStillShowsAWholeBundle()
    {
        PlainStage stage;
        stage.publishVersion(u"1.0.1"_s);
        QFile::copy(u"/bin/sleep"_s, stage.root() + u"/Contents/Linux/old"_s);
        QProcess old;
        old.start(stage.root() + u"/Contents/Linux/old"_s, {u"60"_s});
        QVERIFY(old.waitForStarted());
        QCOMPARE(stage.fetch(stage.offer()).lastEvent(), u"staged"_s);
        QVERIFY(!QFileInfo(stage.root() + u"/Contents/Linux/libferrobank-app.so"_s).isSymbolicLink());
        QCOMPARE(stage.run(u"status"_s).lastEvent(), u"status"_s);
        QVERIFY(QFile::exists(stage.root() + u"/Contents/Linux/libferrobank-app.so"_s));
        old.kill();
        old.waitForFinished();

        QCOMPARE(stage.run(u"install"_s).lastEvent(), u"installed"_s);
        QCOMPARE(stage.run(u"healthy"_s).lastEvent(), u"healthy"_s);
        QVERIFY(!QFile::exists(stage.root() + u"/Contents/Linux/libferrobank-app.so"_s));
        QFile list(stage.root() + u"/Contents/Info.plist"_s);
        QVERIFY(list.open(QIODevice::ReadOnly));
        QVERIFY(list.readAll().contains("1.0.1"));
        QVERIFY(QFile::exists(stage.root() + u"/Contents/Resources/install-kind"_s));
        QCOMPARE(stage.programAnswer(), u"1.0.1"_s);
    }

    void versionThatFailsIsTakenBack()
    {
        PlainStage stage;
        TestRelease broken = stage.makeRelease(u"1.0.1"_s);
        broken.setFile("Contents/Linux/Ferrobank", "#!/bin/sh\nexit 3\n", true);
        stage.publish(broken);
        QCOMPARE(stage.fetch(stage.offer()).lastEvent(), u"staged"_s);
        QCOMPARE(stage.run(u"install"_s, {{u"relaunch"_s, true}}).lastEvent(), u"installed"_s);
        QTRY_COMPARE(stage.installedVersion(), u"1.0.0"_s);
        QCOMPARE(stage.programAnswer(), u"1.0.0"_s);
        QVERIFY(!stage.check(false).last().contains(u"offer"_s));
    }

    void killedAtEveryStepThePathLeadsToOneWholeVersion()
    {
        int deaths = 0;
        for (int step = 1; step < 500; step += kStepsBetweenKills) {
            PlainStage stage;
            stage.publishVersion(u"1.0.1"_s);
            const QJsonObject offer = stage.offer();
            stage.environment[u"FAULT_KILL_AT"_s] = QString::number(step);
            const bool died = stage.fetch(offer).crashed;
            stage.environment.remove(u"FAULT_KILL_AT"_s);
            const std::string number = std::to_string(step);
            const char* const where = number.c_str();
            QVERIFY2(stage.programAnswer() == u"1.0.0"_s, where);
            QVERIFY2(stage.toolAnswer() == u"tool 1.0.0"_s, where);
            if (!died)
                break;
            ++deaths;
            // What comes first differs; every kill within the move is looked at, and some of the rest.
            const bool isMoved = QFileInfo(stage.root() + u"/Contents/Linux/Ferrobank"_s).isSymbolicLink();
            if (isMoved && step % (5 * kStepsBetweenKills) != 1)
                continue;
            QVERIFY2(stage.fetch(offer).lastEvent() == u"staged"_s, where);
            QVERIFY2(stage.run(u"install"_s).lastEvent() == u"installed"_s, where);
            QVERIFY2(stage.programAnswer() == u"1.0.1"_s, where);
        }
        QVERIFY2(deaths > 40 / kStepsBetweenKills, qPrintable(QString::number(deaths)));
    }

    void fileSystemOfLayersIsOneThatCannotExchange()
    {
        if (::geteuid() != 0)
            QSKIP("Only root can mount.");
        PlainStage stage;
        stage.environment.remove(u"LD_PRELOAD"_s);
        const QString above = stage.parent() + u"-above"_s;
        for (const QString& name : {u"/changes"_s, u"/work"_s})
            QVERIFY(QDir().mkpath(above + name));
        if (::mount("tmpfs", qPrintable(above), "tmpfs", 0, "mode=0755") != 0)
            QSKIP("This machine does not let us mount.");
        for (const QString& name : {u"/changes"_s, u"/work"_s})
            QVERIFY(QDir().mkpath(above + name));
        const QString layers =
            u"lowerdir=%1,upperdir=%2/changes,workdir=%2/work"_s.arg(stage.parent(), above);
        const bool isLayered =
            ::mount("overlay", qPrintable(stage.parent()), "overlay", 0, qPrintable(layers)) == 0;
        if (!isLayered) {
            ::umount(qPrintable(above));
            QSKIP("There are no layered file systems here.");
        }
        stage.publishVersion(u"1.0.1"_s);
        const bool canSwap = canExchange(stage.parent().toStdString());
        const QString end = stage.update().lastEvent();
        const QString answer = stage.programAnswer();
        QCOMPARE(::umount2(qPrintable(stage.parent()), MNT_DETACH), 0);
        QCOMPARE(::umount2(qPrintable(above), MNT_DETACH), 0);
        QDir(above).removeRecursively();
        QVERIFY(!canSwap);
        QCOMPARE(end, u"installed"_s);
        QCOMPARE(answer, u"1.0.1"_s);
    }

    void moveIsRefusedWhereSomebodyHasChangedThePrograms()
    {
        PlainStage stage;
        const InstallPlace place = InstallPlace::of(stage.root().toStdString());
        const fs::path tool = place.root / "Contents/Helpers/ferrobank";
        fs::remove(tool);
        fs::create_symlink("/bin/true", tool);
        QVERIFY_THROWS_EXCEPTION(UpdateFailure, std::ignore = moveSideBySide(place, "1.0.0"));
        QCOMPARE(stage.programAnswer(), u"1.0.0"_s);
        QVERIFY(!fs::is_symlink(place.root / "Contents/Linux/Ferrobank"));
    }

    void pathKnownOutsideIsWhatIsWrittenIntoEntries_data()
    {
        QTest::addColumn<QString>("layout");
        QTest::addColumn<QString>("stable");
        QTest::newRow("one folder") << u"plain"_s << u"/Ferrobank.app"_s;
        QTest::newRow("versions") << u"versions"_s << u"/current/Ferrobank.app"_s;
        QTest::newRow("moved among versions") << u"moved"_s << u"/Ferrobank.app"_s;
    }

    void pathKnownOutsideIsWhatIsWrittenIntoEntries()
    {
        QFETCH(QString, layout);
        QFETCH(QString, stable);
        PlainStage stage;
        fs::path real = stage.root().toStdString();
        if (layout == u"versions"_s) {
            stage.useVersionedLayout();
            real = stage.root().toStdString();
        } else if (layout == u"moved"_s)
            real = moveSideBySide(InstallPlace::of(real), "1.0.0").root;
        const Bundle bundle(fs::canonical(real));
        QCOMPARE(QString::fromStdString(bundle.atStablePath().root()), stage.parent() + stable);
        QVERIFY(fs::exists(bundle.atStablePath().executable()));
        QCOMPARE(InstallPlace::of(bundle.root()).staging(),
                 InstallPlace::of(fs::canonical(bundle.atStablePath().root())).staging());
    }

    void wholeCopyIsAllThatIsOursAndNothingElse_data()
    {
        QTest::addColumn<QString>("layout");
        QTest::addColumn<QString>("beside"); // what else lies in the copy's folder
        QTest::addColumn<QStringList>("whole");
        QTest::newRow("one folder") << u"plain"_s << u"notes"_s << QStringList{u"/Ferrobank.app"_s};
        QTest::newRow("one folder, update downloaded")
            << u"plain"_s << u".Ferrobank.app-update"_s
            << QStringList{u"/Ferrobank.app"_s, u"/.Ferrobank.app-update"_s};
        QTest::newRow("versions") << u"versions"_s << QString() << QStringList{QString()};
        QTest::newRow("versions, update downloaded")
            << u"versions"_s << u".Ferrobank.app-update"_s << QStringList{QString()};
        QTest::newRow("versions among a user's files")
            << u"versions"_s << u"notes"_s
            << QStringList{u"/versions/1.0.0/Ferrobank.app"_s, u"/current"_s, u"/Ferrobank"_s};
        QTest::newRow("moved among versions")
            << u"moved"_s << u"notes"_s << QStringList{u"/Ferrobank.app"_s, u"/.Ferrobank.app-versions"_s};
    }

    void wholeCopyIsAllThatIsOursAndNothingElse()
    {
        QFETCH(QString, layout);
        QFETCH(QString, beside);
        QFETCH(QStringList, whole);
        PlainStage stage;
        const fs::path parent = stage.parent().toStdString();
        if (layout == u"versions"_s) {
            stage.useVersionedLayout();
            fs::create_symlink("current/Ferrobank.app/Contents/Linux/Ferrobank", parent / "Ferrobank");
        } else if (layout == u"moved"_s)
            std::ignore = moveSideBySide(InstallPlace::of(stage.root().toStdString()), "1.0.0");
        if (!beside.isEmpty())
            fs::create_directory(parent / beside.toStdString());
        const fs::path program =
            fs::canonical(fs::path(stage.root().toStdString()) / "Contents/Linux/Ferrobank");
        QStringList found;
        for (const fs::path& path : Bundle(program.parent_path().parent_path().parent_path()).wholeCopy())
            found.append(QString::fromStdString(path.native()).mid(stage.parent().size()));
        QCOMPARE(found, whole);
    }

    void folderCalledLikeTheProgramsLinkIsTheUsers()
    {
        PlainStage stage;
        stage.useVersionedLayout();
        const fs::path parent = stage.parent().toStdString();
        fs::create_directory(parent /
                             "Ferrobank"); // the drive, say, in a home that the archive was unpacked in
        const std::vector<fs::path> whole = Bundle(fs::canonical(stage.root().toStdString())).wholeCopy();
        QVERIFY(std::find(whole.begin(), whole.end(), parent / "Ferrobank") == whole.end());
        QVERIFY(std::find(whole.begin(), whole.end(), parent) == whole.end());
        QCOMPARE(whole.size(), 2U);
    }
};

FERROBANK_TEST(UpdateSideBySideTest)
#include "UpdateSideBySideTest.moc"
