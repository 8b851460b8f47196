#include "Platform/linux/desktop/FileWatch.h"

#include "Platform/linux/desktop/LinuxSystemChanges.h"
#include "support/TestProgram.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <algorithm>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

bool write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace

class FileWatchTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        _folder = std::make_unique<QTemporaryDir>();
        _touched = 0;
    }

    void fileThatAppearsChangesAndGoesIsNoticed()
    {
        const QString file = path(u"entry"_s);
        const FileWatch watch({file.toStdString()}, count());
        QVERIFY(write(file, "one"));
        QTRY_VERIFY(_touched > 0);
        _touched = 0;
        QVERIFY(write(file, "two"));
        QTRY_VERIFY(_touched > 0);
        _touched = 0;
        QVERIFY(QFile::remove(file));
        QTRY_VERIFY(_touched > 0);
    }

    void fileReplacedByRenamingIsNoticed()
    {
        const QString file = path(u"entry"_s);
        QVERIFY(write(file, "one"));
        const FileWatch watch({file.toStdString()}, count());
        QVERIFY(write(path(u"entry.new"_s), "two"));
        QCOMPARE(rename(path(u"entry.new"_s).toUtf8().constData(), file.toUtf8().constData()), 0);
        QTRY_VERIFY(_touched > 0);
    }

    void linkIsNoticedThoughItDangles()
    {
        const FileWatch watch({path(u"link"_s).toStdString()}, count());
        QVERIFY(QFile::link(u"/nowhere"_s, path(u"link"_s)));
        QTRY_VERIFY(_touched > 0);
    }

    void neighboursAreNoConcernOfOurs()
    {
        const FileWatch watch({path(u"entry"_s).toStdString()}, count());
        QVERIFY(write(path(u"neighbour"_s), "x"));
        // Events come in order, so once the file itself is noticed the neighbour's would have been too.
        QVERIFY(write(path(u"entry"_s), "x"));
        QTRY_VERIFY(_touched > 0);
        QCoreApplication::processEvents();
        const int before = _touched;
        QVERIFY(QFile::remove(path(u"neighbour"_s)));
        QTest::qWait(0);
        QCOMPARE(_touched, before);
    }

    void foldersOnTheWayMayComeLater()
    {
        const QString file = path(u"a/b/c/entry"_s);
        const FileWatch watch({file.toStdString()}, count());
        QVERIFY(QDir(_folder->path()).mkdir(u"a"_s));
        QTRY_VERIFY(_touched > 0);
        QVERIFY(QDir(_folder->path()).mkpath(u"a/b/c"_s));
        QCoreApplication::processEvents();
        _touched = 0;
        QVERIFY(write(file, "x"));
        QTRY_VERIFY(_touched > 0);
    }

    void folderThatGoesAndComesBackIsFollowed()
    {
        QVERIFY(QDir(_folder->path()).mkdir(u"a"_s));
        const QString file = path(u"a/entry"_s);
        QVERIFY(write(file, "x"));
        const FileWatch watch({file.toStdString()}, count());
        QVERIFY(QDir(path(u"a"_s)).removeRecursively());
        QTRY_VERIFY(_touched > 0);
        QVERIFY(QDir(_folder->path()).mkdir(u"a"_s));
        QCoreApplication::processEvents();
        _touched = 0;
        QVERIFY(write(file, "y"));
        QTRY_VERIFY(_touched > 0);
    }

    void changesThatComeTogetherAreToldOnce()
    {
        LinuxSystemChanges changes({path(u"one"_s).toStdString(), path(u"two"_s).toStdString()});
        QSignalSpy told(&changes, &SystemChanges::changed);
        for (int round = 0; round < 10; ++round) {
            QVERIFY(write(path(u"one"_s), "x"));
            QVERIFY(write(path(u"two"_s), "x"));
        }
        QVERIFY(told.wait());
        QCOMPARE(told.count(), 1);
    }

    void filesOfTheUserFollowTheEnvironment()
    {
        qputenv("XDG_CONFIG_HOME", "/home/anna/my config");
        qputenv("XDG_DATA_HOME", "/home/anna/data");
        const auto files = LinuxSystemChanges::filesOfUser();
        const auto has = [&](const char* file) {
            return std::ranges::find(files, std::filesystem::path(file)) != files.end();
        };
        QVERIFY(has("/home/anna/my config/autostart/org.ferrobank.Ferrobank.desktop"));
        QVERIFY(has("/home/anna/my config/org.ferrobank.Ferrobank.conf"));
        QVERIFY(has(
            "/home/anna/my config/systemd/user/default.target.wants/org.ferrobank.Ferrobank.agent.service"));
        QVERIFY(has("/home/anna/data/systemd/user/org.ferrobank.Ferrobank.agent.service"));
        QVERIFY(has("/usr/local/bin/ferrobank"));
        qunsetenv("XDG_CONFIG_HOME");
        qunsetenv("XDG_DATA_HOME");
    }

private:
    [[nodiscard]] QString path(const QString& name) const { return _folder->filePath(name); }

    std::function<void()> count()
    {
        return [this] { ++_touched; };
    }

    std::unique_ptr<QTemporaryDir> _folder;
    int _touched = 0;
};

} // namespace ferrobank

FERROBANK_TEST(ferrobank::FileWatchTest)
#include "FileWatchTest.moc"
