#include "support/TestProgram.h"
#include "support/updates/UpdateStage.h"

#include <QtCore/QDir>
#include <QtCore/QProcess>
#include <QtTest/QTest>

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace ferrobank;
using namespace Qt::StringLiterals;

namespace {

QJsonObject offerOf(const UpdateStage& stage)
{
    return stage.check().last()[u"offer"_s].toObject();
}

void publishNext(UpdateStage& stage)
{
    stage.publish(stage.makeRelease(u"1.0.1"_s));
}

} // namespace

/// Where a copy may replace itself, and where it leaves everything alone.
class UpdatePlaceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void copiesThatMustNotReplaceThemselvesNeverDownload_data()
    {
        QTest::addColumn<QByteArray>("marker");
        QTest::addColumn<QString>("words");
        QTest::newRow("package") << QByteArray("package\nsudo apt install --only-upgrade ferrobank\n")
                                 << u"package manager"_s;
        QTest::newRow("store") << QByteArray("store\n") << u"store"_s;
        QTest::newRow("development") << QByteArray("development\n") << u"built on this machine"_s;
        QTest::newRow("unknown word") << QByteArray("elsewhere\n") << QString();
    }

    void copiesThatMustNotReplaceThemselvesNeverDownload()
    {
        QFETCH(QByteArray, marker);
        QFETCH(QString, words);
        UpdateStage stage;
        publishNext(stage);
        QFile file(stage.root() + u"/Contents/Resources/install-kind"_s);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(marker) > 0);
        file.close();
        const WorkerOutcome checked = stage.check();
        const QJsonObject place = checked.last()[u"place"_s].toObject();
        QVERIFY(checked.last().contains(u"offer"_s));
        QVERIFY(!place[u"mayReplace"_s].toBool());
        QVERIFY(place[u"sentence"_s].toString().contains(words));
        QCOMPARE(place[u"advice"_s].toString().isEmpty(), !marker.contains("apt"));
        QCOMPARE(stage.fetch(checked.last()[u"offer"_s].toObject()).problem(), u"place"_s);
        QCOMPARE(stage.run(u"install"_s).problem(), u"place"_s);
        QCOMPARE(stage.server.requestsFor("/Ferrobank_1.0.1.tar.zst"), 0);
        QVERIFY(!QFile::exists(stage.staging()));
    }

    void folderThatEverybodyMayWriteIsNoPlace()
    {
        UpdateStage stage;
        publishNext(stage);
        ::chmod(stage.parent().toUtf8().constData(), 0777);
        QCOMPARE(stage.fetch(offerOf(stage)).problem(), u"place"_s);
    }

    void folderThatOthersOfItsGroupMayWriteIsNoPlace()
    {
        if (::geteuid() != 0)
            QSKIP("Only root can give a folder to a group.");
        UpdateStage stage;
        publishNext(stage);
        const QByteArray parent = stage.parent().toUtf8();
        // A group of one's own, as many systems give every user one, is nobody else.
        QCOMPARE(::chown(parent.constData(), 0, 0), 0);
        QCOMPARE(::chmod(parent.constData(), 0775), 0);
        QVERIFY(stage.run(u"status"_s).last()[u"place"_s].toObject()[u"mayReplace"_s].toBool());
        QCOMPARE(::chown(parent.constData(), 0, 4242), 0);
        QCOMPARE(::chmod(parent.constData(), 0775), 0);
        const WorkerOutcome outcome = stage.fetch(offerOf(stage));
        QCOMPARE(outcome.problem(), u"place"_s);
        QVERIFY(outcome.last()[u"sentence"_s].toString().contains(u"of its group"_s));
    }

    void foreignOwnerIsNoPlace()
    {
        if (::geteuid() != 0)
            QSKIP("Only root can give a folder away.");
        UpdateStage stage;
        publishNext(stage);
        QCOMPARE(::chown(stage.root().toUtf8().constData(), 4242, 4242), 0);
        const WorkerOutcome outcome = stage.fetch(offerOf(stage));
        QCOMPARE(outcome.problem(), u"place"_s);
        QVERIFY(outcome.last()[u"sentence"_s].toString().contains(u"another user"_s));
    }

    void driveItselfIsNoPlace()
    {
        UpdateStage stage;
        publishNext(stage);
        stage.environment[u"HOME"_s] = stage.parent();
        QDir().mkpath(stage.parent() + u"/Ferrobank"_s);
        QFile::rename(stage.root(), stage.parent() + u"/Ferrobank/Ferrobank.app"_s);
        const QJsonObject bundle{{u"bundle"_s, stage.parent() + u"/Ferrobank/Ferrobank.app"_s}};
        const WorkerOutcome outcome = stage.run(u"status"_s, bundle);
        QVERIFY(!outcome.last()[u"place"_s].toObject()[u"mayReplace"_s].toBool());
    }

    void readOnlyVolumeIsNoPlace()
    {
        UpdateStage stage;
        publishNext(stage);
        const QByteArray parent = stage.parent().toUtf8();
        if (::mount(parent.constData(), parent.constData(), nullptr, MS_BIND, nullptr) != 0)
            QSKIP("This machine does not let us mount.");
        QCOMPARE(::mount(nullptr, parent.constData(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0);
        const WorkerOutcome outcome = stage.fetch(offerOf(stage));
        const QString version = stage.installedVersion();
        QCOMPARE(::umount(parent.constData()), 0);
        QCOMPARE(outcome.problem(), u"place"_s);
        QCOMPARE(version, u"1.0.0"_s);
        QCOMPARE(stage.leftovers(), QStringList());
    }

    void mediumWithoutOwnersIsNoPlace()
    {
        UpdateStage stage;
        publishNext(stage);
        const QString image = stage.parent() + u"/medium"_s;
        const QString folder = stage.parent() + u"/mounted"_s;
        QVERIFY(QDir().mkpath(folder));
        QFile file(image);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(64 << 20));
        file.close();
        const bool isThere = QProcess::execute(u"/sbin/mkfs.vfat"_s, {image}) == 0 &&
                             QProcess::execute(u"/bin/mount"_s, {u"-o"_s, u"loop"_s, image, folder}) == 0;
        if (!isThere)
            QSKIP("This machine cannot mount such a medium.");
        stage.makeRelease(u"1.0.0"_s).installAt(folder + u"/Ferrobank.app"_s);
        const WorkerOutcome outcome =
            stage.run(u"status"_s, {{u"bundle"_s, QString(folder + u"/Ferrobank.app"_s)}});
        const QStringList left =
            QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        QCOMPARE(QProcess::execute(u"/bin/umount"_s, {folder}), 0);
        const QJsonObject place = outcome.last()[u"place"_s].toObject();
        QVERIFY(!place[u"mayReplace"_s].toBool());
        QVERIFY(place[u"sentence"_s].toString().contains(u"removable"_s));
        QCOMPARE(left, QStringList{u"Ferrobank.app"_s});
    }
};

FERROBANK_TEST(UpdatePlaceTest)
#include "UpdatePlaceTest.moc"
