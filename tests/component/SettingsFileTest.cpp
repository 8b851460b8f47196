#include "Platform/linux/files/SettingsFile.h"

#include "support/SmallFileSystem.h"
#include "support/TestProgram.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <sys/stat.h>

using namespace ferrobank;
using namespace ferrobank::test;
using namespace Qt::StringLiterals;

class SettingsFileTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> _folder;
    const QString _key = u"setupComplete"_s;

    [[nodiscard]] QString path() const { return _folder->filePath(u"config/settings.conf"_s); }

    [[nodiscard]] SettingsFile settings() const { return SettingsFile(path().toStdString()); }

    void write(const QByteArray& content) const
    {
        QDir().mkpath(_folder->filePath(u"config"_s));
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }

    [[nodiscard]] static QByteArray contentOf(const QString& file)
    {
        QFile opened(file);
        return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray("unreadable");
    }

private Q_SLOTS:

    void init() { _folder = std::make_unique<QTemporaryDir>(); }

    void standardPlaceFollowsTheEnvironment()
    {
        const QByteArray before = qgetenv("XDG_CONFIG_HOME");
        qputenv("XDG_CONFIG_HOME", "/some where");
        const auto there = SettingsFile::standardPlace();
        qputenv("XDG_CONFIG_HOME", "relative");
        const QByteArray home = qgetenv("HOME");
        qputenv("HOME", "/home/ann");
        const auto relative = SettingsFile::standardPlace();
        qputenv("HOME", home);
        before.isEmpty() ? qunsetenv("XDG_CONFIG_HOME") : qputenv("XDG_CONFIG_HOME", before);
        QCOMPARE(there.string(), "/some where/org.ferrobank.Ferrobank.conf");
        QCOMPARE(relative.string(), "/home/ann/.config/org.ferrobank.Ferrobank.conf");
    }

    void missingFileReadsAsFalse() { QVERIFY(!settings().boolForKey(_key)); }

    void valueReachesTheDiskAndOtherReadersAtOnce()
    {
        SettingsFile one = settings();
        const SettingsFile other = settings();
        QVERIFY(one.setBool(_key, true));
        QVERIFY(one.boolForKey(_key));
        QVERIFY(other.boolForKey(_key));
        QCOMPARE(contentOf(path()), "[General]\nsetupComplete=true\n");
        QVERIFY(one.setBool(_key, false));
        QVERIFY(!other.boolForKey(_key));
        QCOMPARE(contentOf(path()), "[General]\nsetupComplete=false\n");
        QCOMPARE(QDir(_folder->filePath(u"config"_s)).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }

    void fileIsReadByTheToolkitsOwnSettings()
    {
        QVERIFY(settings().setBool(_key, true));
        QVERIFY(QSettings(path(), QSettings::IniFormat).value(_key).toBool());
    }

    void onlyTrueAndOneAreTrue_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("value");
        QTest::newRow("true") << QByteArray("[General]\nsetupComplete=true\n") << true;
        QTest::newRow("one") << QByteArray("[General]\nsetupComplete=1") << true;
        QTest::newRow("blanks") << QByteArray("[General]\n setupComplete = true \r\n") << true;
        QTest::newRow("without a section") << QByteArray("setupComplete=true") << true;
        QTest::newRow("remarks") << QByteArray("; a\n# b\n\n[General]\nsetupComplete=true") << true;
        QTest::newRow("the last counts")
            << QByteArray("[General]\nsetupComplete=false\nsetupComplete=true\n") << true;
        QTest::newRow("false") << QByteArray("[General]\nsetupComplete=false\n") << false;
        QTest::newRow("yes") << QByteArray("[General]\nsetupComplete=yes\n") << false;
        QTest::newRow("capitals") << QByteArray("[General]\nsetupComplete=True\n") << false;
        QTest::newRow("nothing") << QByteArray("[General]\nsetupComplete=\n") << false;
        QTest::newRow("another number") << QByteArray("[General]\nsetupComplete=2\n") << false;
        QTest::newRow("invalid") << QByteArray("[General]\nsetupComplete=@Invalid()\n") << false;
        QTest::newRow("another section") << QByteArray("[Window]\nsetupComplete=true\n") << false;
        QTest::newRow("another key") << QByteArray("[General]\nsetupcomplete=true\n") << false;
        QTest::newRow("empty file") << QByteArray() << false;
        QTest::newRow("no settings file") << QByteArray("setupComplete=true\nhello\n") << false;
        QTest::newRow("zero bytes") << QByteArray(512, '\0') << false;
    }

    void onlyTrueAndOneAreTrue()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, value);
        write(content);
        QCOMPARE(settings().boolForKey(_key), value);
    }

    void linesOfOthersAreKept()
    {
        write("# "
              "mine\n[Window]\nwidth=7\n\n[General]\nother=x\nsetupComplete=false\n[Last]\nsetupComplete="
              "keep\n");
        QVERIFY(settings().setBool(_key, true));
        QCOMPARE(contentOf(path()), "# "
                                    "mine\n[Window]\nwidth=7\n\n[General]\nother=x\nsetupComplete=true\n["
                                    "Last]\nsetupComplete=keep\n");
    }

    void missingSectionIsAdded()
    {
        write("[Window]\nwidth=7\n");
        QVERIFY(settings().setBool(_key, true));
        QCOMPARE(contentOf(path()), "[Window]\nwidth=7\n[General]\nsetupComplete=true\n");
        QVERIFY(settings().boolForKey(_key));
    }

    void brokenFileIsKeptAside()
    {
        write("\x01\x02 half a fi");
        QVERIFY(settings().setBool(_key, true));
        QVERIFY(settings().boolForKey(_key));
        QCOMPARE(contentOf(path() + u".broken"_s), "\x01\x02 half a fi");
        write("broken again");
        QVERIFY(settings().setBool(_key, true));
        QCOMPARE(contentOf(path() + u".broken"_s), "\x01\x02 half a fi");
        QCOMPARE(contentOf(path() + u".broken-2"_s), "broken again");
    }

    void brokenFileIsNotTouchedByReading()
    {
        write("broken");
        QVERIFY(!settings().boolForKey(_key));
        QCOMPARE(contentOf(path()), "broken");
    }

    void unreadablePlaceIsKeptAside_data()
    {
        QTest::addColumn<bool>("isFolder");
        QTest::newRow("a folder") << true;
        QTest::newRow("a pipe, which would make a reader wait") << false;
    }

    void unreadablePlaceIsKeptAside()
    {
        QFETCH(bool, isFolder);
        QVERIFY(QDir().mkpath(_folder->filePath(u"config"_s)));
        const QByteArray file = QFile::encodeName(path());
        QCOMPARE(isFolder ? ::mkdir(file.constData(), 0700) : ::mkfifo(file.constData(), 0600), 0);
        QVERIFY(!settings().boolForKey(_key));
        QVERIFY(settings().setBool(_key, true));
        QVERIFY(settings().boolForKey(_key));
        QVERIFY(QFileInfo::exists(path() + u".broken"_s));
    }

    void hugeFileIsNotRead()
    {
        write(QByteArray("[General]\nsetupComplete=true\n") + QByteArray(1'000'000, '\n'));
        QVERIFY(!settings().boolForKey(_key));
    }

    void linkToTheFileStaysALink()
    {
        QVERIFY(QDir().mkpath(_folder->filePath(u"config"_s)));
        QVERIFY(QDir().mkpath(_folder->filePath(u"dotfiles"_s)));
        const QString real = _folder->filePath(u"dotfiles/settings.conf"_s);
        QVERIFY(QFile(real).open(QIODevice::WriteOnly));
        QVERIFY(QFile::link(real, path()));
        QVERIFY(settings().setBool(_key, true));
        QCOMPARE(QFile::symLinkTarget(path()), real);
        QCOMPARE(contentOf(real), "[General]\nsetupComplete=true\n");
    }

    void fullDiskKeepsTheOldFileAndTheNewValue()
    {
        if (!SmallFileSystem::isPossible()) {
            QSKIP("this machine allows no private mounts");
        }
        const SmallFileSystem disk(64);
        SettingsFile file(disk.file(u"settings.conf"_s).toStdString());
        QVERIFY(file.setBool(_key, true));
        disk.fill();
        QVERIFY(!file.setBool(_key, false));
        QVERIFY(!file.boolForKey(_key));
        QCOMPARE(contentOf(disk.file(u"settings.conf"_s)), "[General]\nsetupComplete=true\n");
        QVERIFY(QFile::remove(disk.file(u"filler"_s)));
        QVERIFY(file.setBool(u"another"_s, true));
        QCOMPARE(contentOf(disk.file(u"settings.conf"_s)), "[General]\nanother=true\nsetupComplete=false\n");
    }

    void readOnlyDiskKeepsTheOldFile()
    {
        if (!SmallFileSystem::isPossible()) {
            QSKIP("this machine allows no private mounts");
        }
        const SmallFileSystem disk(64);
        SettingsFile file(disk.file(u"settings.conf"_s).toStdString());
        QVERIFY(file.setBool(_key, true));
        disk.makeReadOnly();
        const SettingsFile other(disk.file(u"settings.conf"_s).toStdString());
        QVERIFY(!file.setBool(_key, false));
        QVERIFY(!file.boolForKey(_key));
        QVERIFY(other.boolForKey(_key));
    }

    void accountWithoutAHomeHasNoSettings()
    {
        SettingsFile file{std::filesystem::path()};
        QVERIFY(!file.boolForKey(_key));
        QVERIFY(!file.setBool(_key, true));
        QVERIFY(file.boolForKey(_key));
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(SettingsFileTest)
#include "SettingsFileTest.moc"
