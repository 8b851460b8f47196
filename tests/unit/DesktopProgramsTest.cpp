#include "Platform/linux/process/ForeignEnvironment.h"
#include "Platform/linux/workspace/DesktopPages.h"
#include "support/TestProgram.h"

#include <QtTest/QTest>

using namespace ferrobank;
using namespace Qt::StringLiterals;

class DesktopProgramsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void everythingButOurOwnAdditionsIsHandedOn()
    {
        const QStringList ours{u"HOME=/home/ann"_s,
                               u"LD_LIBRARY_PATH=/image/lib"_s,
                               u"LD_PRELOAD=x.so"_s,
                               u"QT_PLUGIN_PATH=/image/qt"_s,
                               u"XDG_ACTIVATION_TOKEN=a"_s,
                               u"DESKTOP_STARTUP_ID=b"_s,
                               u"EMPTY="_s,
                               u"EQUALS=a=b"_s,
                               u"LD_LIBRARY_PATHS=kept"_s};
        QCOMPARE(
            foreignEnvironment(ours, QString()),
            (QStringList{u"HOME=/home/ann"_s, u"EMPTY="_s, u"EQUALS=a=b"_s, u"LD_LIBRARY_PATHS=kept"_s}));
    }

    void tokenIsHandedOnUnderBothNames()
    {
        QCOMPARE(foreignEnvironment({}, u"t=1"_s),
                 (QStringList{u"XDG_ACTIVATION_TOKEN=t=1"_s, u"DESKTOP_STARTUP_ID=t=1"_s}));
    }

    void foldersOfAnApplicationImageLeaveTheSearchPath()
    {
        const QStringList ours{u"APPDIR=/tmp/.mount_x"_s, u"APPIMAGE=/home/ann/x"_s,
                               u"PATH=/tmp/.mount_x/usr/bin:/usr/bin:/tmp/.mount_xy/bin:/tmp/.mount_x"_s};
        QCOMPARE(foreignEnvironment(ours, QString()), QStringList{u"PATH=/usr/bin:/tmp/.mount_xy/bin"_s});
    }

    void searchPathIsUntouchedWithoutAnImage()
    {
        const QStringList ours{u"PATH=/a::/b"_s};
        QCOMPARE(foreignEnvironment(ours, QString()), ours);
    }

    void everyDesktopHasItsOwnPageFirst_data()
    {
        QTest::addColumn<QString>("desktop");
        QTest::addColumn<Command>("storage");
        QTest::addColumn<Command>("filesAndFolders");
        QTest::newRow("GNOME") << u"GNOME"_s << Command{u"baobab"_s}
                               << Command{u"gnome-control-center"_s, u"applications"_s};
        QTest::newRow("Ubuntu") << u"ubuntu:GNOME"_s << Command{u"baobab"_s}
                                << Command{u"gnome-control-center"_s, u"applications"_s};
        QTest::newRow("KDE") << u"KDE"_s << Command{u"filelight"_s}
                             << Command{u"systemsettings"_s, u"kcm_app-permissions"_s};
        QTest::newRow("Xfce") << u"XFCE"_s << Command{u"baobab"_s} << Command{u"xfce4-settings-manager"_s};
        QTest::newRow("LXQt") << u"LXQt"_s << Command{u"qdirstat"_s} << Command{u"lxqt-config"_s};
        QTest::newRow("MATE") << u"MATE"_s << Command{u"mate-disk-usage-analyzer"_s}
                              << Command{u"mate-control-center"_s};
        QTest::newRow("Cinnamon") << u"X-Cinnamon"_s << Command{u"baobab"_s}
                                  << Command{u"cinnamon-settings"_s};
    }

    void noStoragePageIsAProgramThatFormatsDisks()
    {
        for (const QString& desktop :
             {u"GNOME"_s, u"KDE"_s, u"XFCE"_s, u"LXQt"_s, u"MATE"_s, u"X-Cinnamon"_s, QString()})
        {
            for (const Command& command : commandsForPage(SettingsPage::Storage, desktop)) {
                for (const QString& formatter : {u"gnome-disks"_s, u"partitionmanager"_s, u"gparted"_s}) {
                    QVERIFY(command.first() != formatter);
                }
            }
        }
    }

    void everyDesktopHasItsOwnPageFirst()
    {
        QFETCH(QString, desktop);
        QFETCH(Command, storage);
        QFETCH(Command, filesAndFolders);
        QCOMPARE(commandsForPage(SettingsPage::Storage, desktop).first(), storage);
        QCOMPARE(commandsForPage(SettingsPage::FilesAndFolders, desktop).first(), filesAndFolders);
    }

    void unknownDesktopsGetTheNearestPages_data()
    {
        QTest::addColumn<QString>("desktop");
        QTest::newRow("sway") << u"sway"_s;
        QTest::newRow("none") << QString();
        QTest::newRow("a name that only begins like one") << u"KDE2"_s;
    }

    void unknownDesktopsGetTheNearestPages()
    {
        QFETCH(QString, desktop);
        for (const SettingsPage page : {SettingsPage::Storage, SettingsPage::FilesAndFolders}) {
            const auto commands = commandsForPage(page, desktop);
            QVERIFY(commands.size() > 4);
            QCOMPARE(commands, commandsForPage(page, u"GNOME"_s));
            for (const Command& command : commands) {
                QCOMPARE(commands.count(command), 1);
            }
        }
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(DesktopProgramsTest)
#include "DesktopProgramsTest.moc"
