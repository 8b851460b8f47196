#include "Platform/linux/workspace/LinuxWorkspace.h"

#include "Platform/linux/workspace/DesktopPages.h"
#include "Platform/linux/workspace/DesktopPrograms.h"
#include "support/Await.h"
#include "support/SmallFileSystem.h"
#include "support/TestProgram.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusContext>
#include <QtTest/QTest>

using namespace ferrobank;
using namespace ferrobank::test;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// A file manager on the session bus.
class FileManager : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    bool fails = false;
    QList<QStringList> calls; ///< method, token, addresses

public Q_SLOTS:

    void ShowFolders(const QStringList& uris, const QString& token) { note(u"ShowFolders"_s, uris, token); }

    void ShowItems(const QStringList& uris, const QString& token) { note(u"ShowItems"_s, uris, token); }

private:
    void note(const QString& method, const QStringList& uris, const QString& token)
    {
        calls.append(QStringList{method, token} + uris);
        if (fails) {
            sendErrorReply(QDBusError::Failed, u"broken"_s);
        }
    }
};

} // namespace

/// A desktop of the test's own: a session bus, and openers that note what they were given.
class LinuxWorkspaceTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir _bus;
    QProcess _daemon;
    std::unique_ptr<QTemporaryDir> _folder;
    std::unique_ptr<FileManager> _fileManager;
    QStringList _told;

    [[nodiscard]] QString path(const QString& name) const { return _folder->filePath(name); }

    [[nodiscard]] DesktopMessages messages()
    {
        DesktopMessages messages;
        messages.show = [this](const QString& sentence) { _told.append(sentence); };
        messages.activationToken = [] { return u"token-7"_s; };
        return messages;
    }

    /// A program in the search path that notes its arguments and some variables, and then does what is said.
    void program(const QString& name, const QByteArray& does)
    {
        QFile file(path(u"bin/"_s + name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n{ printf '%s|' \"$0\" \"$@\"; echo "
                   "\"${XDG_ACTIVATION_TOKEN-none}|${LD_LIBRARY_PATH-none}\"; } | "
                   "sed 's|^.*/bin/||' >>'" +
                   QFile::encodeName(path(u"started"_s)) + "'\n" + does + '\n');
        file.close();
        QVERIFY(
            file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner));
    }

    [[nodiscard]] QStringList started() const
    {
        QFile file(path(u"started"_s));
        return file.open(QIODevice::ReadOnly)
                   ? QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts)
                   : QStringList();
    }

    void startFileManager()
    {
        _fileManager = std::make_unique<FileManager>();
        auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"file manager"_s);
        QVERIFY(bus.registerObject(u"/org/freedesktop/FileManager1"_s, _fileManager.get(),
                                   QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService(u"org.freedesktop.FileManager1"_s));
    }

    QString newFile(const QString& name) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly)) {
            qFatal("cannot make a file");
        }
        return path(name);
    }

private Q_SLOTS:

    void initTestCase()
    {
        const QString address = u"unix:path="_s + _bus.filePath(u"bus"_s);
        _daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--address="_s + address});
        QVERIFY(_daemon.waitForStarted());
        QTRY_VERIFY(QFile::exists(_bus.filePath(u"bus"_s)));
        qputenv("DBUS_SESSION_BUS_ADDRESS", address.toUtf8());
        qputenv("LD_LIBRARY_PATH", "/ours");
        qunsetenv("SNAP");
    }

    void cleanupTestCase()
    {
        QDBusConnection::disconnectFromBus(u"qt_default_session_bus"_s);
        _daemon.terminate();
        QVERIFY(_daemon.waitForFinished());
    }

    void init()
    {
        _folder = std::make_unique<QTemporaryDir>(QDir::tempPath() + u"/my folder-XXXXXX"_s);
        _told.clear();
        QVERIFY(QDir(_folder->path()).mkdir(u"bin"_s));
        qputenv("PATH", QFile::encodeName(path(u"bin"_s)) + ":/usr/bin:/bin");
    }

    void cleanup()
    {
        _fileManager.reset();
        QDBusConnection::disconnectFromBus(u"file manager"_s);
    }

    void folderIsShownByTheFileManager()
    {
        startFileManager();
        program(u"xdg-open"_s, "exit 0");
        LinuxWorkspace workspace(messages());
        workspace.openPath(_folder->path());
        QTRY_COMPARE(_fileManager->calls.size(), 1);
        QCOMPARE(_fileManager->calls.first(),
                 (QStringList{u"ShowFolders"_s, u"token-7"_s,
                              QString(u"file://"_s + _folder->path()).replace(u' ', u"%20"_s)}));
        QVERIFY(started().isEmpty());
        QVERIFY(_told.isEmpty());
    }

    void folderGoesToTheOpenerWithoutAFileManager()
    {
        program(u"xdg-open"_s, "exit 0");
        LinuxWorkspace workspace(messages());
        workspace.openPath(_folder->path());
        QTRY_COMPARE(started(), QStringList{u"xdg-open|"_s + _folder->path() + u"|token-7|none"_s});
    }

    void fileManagerThatFailsIsNotTheEnd()
    {
        startFileManager();
        _fileManager->fails = true;
        program(u"xdg-open"_s, "exit 0");
        LinuxWorkspace workspace(messages());
        workspace.openPath(_folder->path());
        QTRY_COMPARE(started().size(), 1);
        QCOMPARE(_fileManager->calls.size(), 1);
    }

    void fileIsOpenedByTheUsersProgramForIt()
    {
        startFileManager();
        program(u"xdg-open"_s, "exit 0");
        LinuxWorkspace workspace(messages());
        const QString file = newFile(u"a log $HOME.txt"_s);
        workspace.openPath(file);
        QTRY_COMPARE(started(), QStringList{u"xdg-open|"_s + file + u"|token-7|none"_s});
        QVERIFY(_fileManager->calls.isEmpty());
    }

    void fileWithoutAProgramIsShownInItsFolder()
    {
        startFileManager();
        program(u"xdg-open"_s, "exit 3");
        program(u"gio"_s, "exit 2");
        LinuxWorkspace workspace(messages());
        const QString file = newFile(u"log"_s);
        workspace.openPath(file);
        QTRY_COMPARE(_fileManager->calls.size(), 1);
        QCOMPARE(_fileManager->calls.first().first(), u"ShowItems"_s);
        QCOMPARE(started(), (QStringList{u"xdg-open|"_s + file + u"|token-7|none"_s,
                                         u"gio|open|"_s + file + u"|token-7|none"_s}));
        QVERIFY(_told.isEmpty());
    }

    void whatNothingOpensIsTold()
    {
        program(u"xdg-open"_s, "exit 3");
        program(u"gio"_s, "exit 2");
        LinuxWorkspace workspace(messages());
        const QString file = newFile(u"log"_s);
        workspace.openPath(file);
        QTRY_COMPARE(_told, QStringList{u"No program on this computer could open “%1”."_s.arg(file)});
    }

    void whatGoesWrongInAnOpeningIsReportedAndNotLost()
    {
        program(u"xdg-open"_s, "exit 3");
        program(u"gio"_s, "exit 2");
        DesktopMessages throwing;
        throwing.show = [](const QString&) { throw std::runtime_error("no window for it"); };
        LinuxWorkspace workspace(throwing);
        int reports = 0;
        static int* counted = nullptr;
        counted = &reports;
        const auto former =
            qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
                *counted += type == QtCriticalMsg && text.contains(u"no window for it"_s) ? 1 : 0;
            });
        workspace.openPath(path(u"missing"_s));
        workspace.openUrl(u"https://example.org/"_s);
        const bool both = QTest::qWaitFor([&reports] { return reports == 2; });
        qInstallMessageHandler(former);
        QVERIFY(both);
    }

    void whatIsNotThereIsToldAndNotOpened()
    {
        startFileManager();
        program(u"xdg-open"_s, "exit 0");
        LinuxWorkspace workspace(messages());
        workspace.openPath(path(u"no log yet"_s));
        QTRY_COMPARE(_told, QStringList{u"“%1” does not exist."_s.arg(path(u"no log yet"_s))});
        QVERIFY(started().isEmpty());
        QVERIFY(_fileManager->calls.isEmpty());
    }

    void fileSystemThatGivesNoAnswerIsTold()
    {
        program(u"xdg-open"_s, "exit 0");
        LinuxWorkspace workspace(messages());
        const QString refused = u'/' + QString(5000, u'x');
        workspace.openPath(refused);
        QTRY_COMPARE(_told, QStringList{u"“%1” does not answer."_s.arg(refused)});
        QVERIFY(started().isEmpty());
    }

    void addressGoesToTheBrowser()
    {
        program(u"xdg-open"_s, "exit 0");
        LinuxWorkspace workspace(messages());
        workspace.openUrl(u"https://example.org/a?b=c&d"_s);
        QTRY_COMPARE(started(), QStringList{u"xdg-open|https://example.org/a?b=c&d|token-7|none"_s});
    }

    void programThatRunsOnCountsAsStartedAndIsNotWaitedFor()
    {
        program(u"xdg-open"_s, "trap '' HUP; while [ ! -e '" + QFile::encodeName(path(u"go"_s)) +
                                   "' ]; do sleep 0.05; done; : >'" + QFile::encodeName(path(u"over"_s)) +
                                   "'; exit 9");
        program(u"gio"_s, "exit 0");
        const auto longEnough = 50ms;
        QVERIFY(await(startFirstThatWorks({{u"xdg-open"_s}, {u"gio"_s}}, QString(), longEnough)));
        QTRY_VERIFY(started().size() == 1);
        newFile(u"go"_s);
        QTRY_VERIFY(QFile::exists(path(u"over"_s)));
        QCOMPARE(started(), QStringList{u"xdg-open|none|none"_s});
    }

    void workspaceMayGoWhileSomethingIsBeingOpened()
    {
        program(u"xdg-open"_s, "exit 0");
        std::make_unique<LinuxWorkspace>(messages())->openPath(newFile(u"log"_s));
        QTRY_COMPARE(started().size(), 1);
    }

    void settingsPageIsTheDesktopsOwn()
    {
        qputenv("XDG_CURRENT_DESKTOP", "XFCE");
        program(u"filelight"_s, "exit 0");
        program(u"baobab"_s, "exit 1");
        program(u"gnome-disks"_s, "exit 0"); // formats disks: not what was asked for
        DesktopPages pages(messages());
        pages.open(SettingsPage::Storage);
        QTRY_COMPARE(started(), (QStringList{u"baobab|token-7|none"_s, u"filelight|token-7|none"_s}));
        QVERIFY(_told.isEmpty());
    }

    void settingsPageThatNoDesktopHasIsTold()
    {
        qputenv("PATH", QFile::encodeName(path(u"bin"_s)));
        DesktopPages pages(messages());
        pages.open(SettingsPage::FilesAndFolders);
        QTRY_COMPARE(_told.size(), 1);
        pages.open(SettingsPage::Storage);
        QTRY_COMPARE(_told.size(), 2);
        QVERIFY(_told.first() != _told.last());
    }

    void recycledFileIsInTheTrash_data()
    {
        QTest::addColumn<bool>("dataFolderIsThere");
        QTest::newRow("with a data folder") << true;
        QTest::newRow("without one") << false;
    }

    void recycledFileIsInTheTrash()
    {
        QFETCH(bool, dataFolderIsThere);
        const QString data = path(u"share/data"_s);
        qputenv("XDG_DATA_HOME", QFile::encodeName(data));
        if (dataFolderIsThere) {
            QVERIFY(QDir().mkpath(data));
        }
        const QString current = QDir::currentPath();
        QVERIFY(QDir().mkpath(path(u"Ferrobank app/Contents"_s)));
        QVERIFY(QDir().mkdir(path(u"current"_s)));
        QVERIFY(QDir::setCurrent(path(u"current"_s)));
        LinuxWorkspace workspace(messages());
        const bool moved = await(workspace.recycle(path(u"Ferrobank app"_s)));
        QVERIFY(QDir::setCurrent(current));
        qunsetenv("XDG_DATA_HOME");
        QVERIFY(moved);
        QVERIFY(!QFile::exists(path(u"Ferrobank app"_s)));
        QVERIFY(QFile::exists(data + u"/Trash/files/Ferrobank app/Contents"_s));
        QFile info(data + u"/Trash/info/Ferrobank app.trashinfo"_s);
        QVERIFY(info.open(QIODevice::ReadOnly));
        const QByteArray facts = info.readAll();
        const QByteArray place = QByteArray::fromPercentEncoding(facts.split('\n').value(1));
        QCOMPARE(place, "Path=" + QFile::encodeName(path(u"Ferrobank app"_s)));
        QVERIFY(QDir(path(u"current"_s)).isEmpty());
    }

    void whatCannotBeRecycledStays()
    {
        qputenv("XDG_DATA_HOME", "/proc/nowhere");
        program(u"gio"_s, "exit 1");
        const QString current = QDir::currentPath();
        QVERIFY(QDir().mkdir(path(u"current"_s)));
        QVERIFY(QDir::setCurrent(path(u"current"_s)));
        LinuxWorkspace workspace(messages());
        const bool moved = await(workspace.recycle(newFile(u"kept"_s)));
        const bool nothing = await(workspace.recycle(path(u"nothing"_s)));
        QVERIFY(QDir::setCurrent(current));
        qunsetenv("XDG_DATA_HOME");
        QVERIFY(!moved);
        QVERIFY(!nothing);
        QVERIFY(QFile::exists(path(u"kept"_s)));
        QVERIFY(QDir(path(u"current"_s)).isEmpty());
    }

    void secondTrashIsAskedWhenTheFirstFails()
    {
        qputenv("XDG_DATA_HOME", "/proc/nowhere");
        program(u"gio"_s, "rm -- \"$3\"");
        LinuxWorkspace workspace(messages());
        const bool moved = await(workspace.recycle(newFile(u"gone"_s)));
        qunsetenv("XDG_DATA_HOME");
        QVERIFY(moved);
        QCOMPARE(started(), QStringList{u"gio|trash|--|"_s + path(u"gone"_s) + u"|none|none"_s});
    }

    void volumeIconThatCannotBeSetEndsAllTheSame()
    {
        LinuxWorkspace workspace(messages());
        await(workspace.setVolumeIcon(u"/nonexistent.icns"_s, _folder->path()));
        QVERIFY(!QFile::exists(path(u".VolumeIcon.icns"_s)));
        QVERIFY(_told.isEmpty());
    }
};

FERROBANK_TEST(LinuxWorkspaceTest)
#include "LinuxWorkspaceTest.moc"
