#include "Platform/linux/report/LinuxSystemReport.h"
#include "support/Await.h"
#include "support/PrivateBus.h"
#include "support/TestProgram.h"

#include <QtCore/QTemporaryDir>
#include <QtDBus/QDBusMessage>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using namespace ferrobank;

namespace {

/// A tray host as far as a question for it goes.
class Watcher : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost CONSTANT)

public:
    explicit Watcher(bool hasHost) : _hasHost(hasHost) {}

    [[nodiscard]] bool hasHost() const { return _hasHost; }

private:
    bool _hasHost;
};

} // namespace

/// What the system tells about itself, asked for on a bus of the test's own.
class SystemReportTest : public QObject {
    Q_OBJECT

private:
    SystemFacts read(const QString& mountpoint = {})
    {
        LinuxSystemReport report(_bundle.path().toStdString());
        return test::await(report.read(mountpoint));
    }

    QTemporaryDir _bundle;

private Q_SLOTS:

    void init()
    {
        qputenv("XDG_CURRENT_DESKTOP", "XFCE");
        qputenv("XDG_SESSION_TYPE", "x11");
        qputenv("DISPLAY", ":77");
        qunsetenv("WAYLAND_DISPLAY");
    }

    void theSessionIsDescribed()
    {
        const PrivateBus bus;
        QVERIFY(bus.isUp());
        const SystemFacts facts = read();
        QCOMPARE(facts.desktop, u"XFCE"_s);
        QCOMPARE(facts.session, u"x11, X display"_s);
        QCOMPARE(facts.installKind, u"unknown kind of install"_s);
        QVERIFY(!facts.user.isEmpty());
        QVERIFY(!facts.host.isEmpty());
    }

    void anEmptyBusHasNoTrayNoPortalAndNoServiceManager()
    {
        const PrivateBus bus;
        QVERIFY(bus.isUp());
        const SystemFacts facts = read();
        QCOMPARE(facts.trayHost, u"none"_s);
        QCOMPARE(facts.portals, QStringList());
        QCOMPARE(facts.serviceManager, u"none"_s);
    }

    void theTrayHostIsNamedByItsProgram_data()
    {
        QTest::addColumn<bool>("hasHost");
        QTest::addColumn<QString>("ending");
        QTest::newRow("with a host") << true << QString();
        QTest::newRow("only a watcher") << false << u", without a host"_s;
    }

    void theTrayHostIsNamedByItsProgram()
    {
        QFETCH(bool, hasHost);
        QFETCH(QString, ending);
        PrivateBus bus;
        QVERIFY(bus.isUp());
        QDBusConnection panel = bus.connect();
        Watcher watcher(hasHost);
        QVERIFY(panel.registerObject(u"/StatusNotifierWatcher"_s, &watcher,
                                     QDBusConnection::ExportAllProperties));
        QVERIFY(panel.registerService(u"org.kde.StatusNotifierWatcher"_s));
        QCOMPARE(read().trayHost, QCoreApplication::applicationName().first(15) + ending);
    }

    void runningPortalsAreListed()
    {
        PrivateBus bus;
        QVERIFY(bus.isUp());
        QDBusConnection portal = bus.connect();
        QVERIFY(portal.registerService(u"org.freedesktop.portal.Desktop"_s));
        QVERIFY(portal.registerService(u"org.freedesktop.impl.portal.desktop.gtk"_s));
        QVERIFY(portal.registerService(u"org.example.Other"_s));
        QCOMPARE(read().portals, (QStringList{u"org.freedesktop.impl.portal.desktop.gtk"_s,
                                              u"org.freedesktop.portal.Desktop"_s}));
    }

    void withoutABusTheRestIsStillTold()
    {
        const QTemporaryDir nowhere;
        qputenv("DBUS_SESSION_BUS_ADDRESS", u"unix:path=%1/bus"_s.arg(nowhere.path()).toUtf8());
        const SystemFacts facts = read(u"/"_s);
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        QCOMPARE(facts.trayHost, u"no session bus"_s);
        QCOMPARE(facts.serviceManager, u"no session bus"_s);
        QVERIFY(facts.mountLine.contains(u" / "_s));
    }

    void aPlaceWithoutAMountIsToldSo()
    {
        const PrivateBus bus;
        QCOMPARE(read(_bundle.path()).mountLine, u"nothing is mounted there"_s);
    }

    void theInstallKindIsReadFromTheBundle()
    {
        const PrivateBus bus;
        QVERIFY(QDir(_bundle.path()).mkpath(u"Contents/Resources"_s));
        QFile marker(_bundle.filePath(u"Contents/Resources/install-kind"_s));
        QVERIFY(marker.open(QIODevice::WriteOnly));
        marker.write("package\napt upgrade\n");
        marker.close();
        QCOMPARE(read().installKind, u"package"_s);
    }
};

FERROBANK_TEST(SystemReportTest)
#include "SystemReportTest.moc"
