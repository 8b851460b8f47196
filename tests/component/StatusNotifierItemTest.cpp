#include "Platform/linux/tray/StatusNotifierItem.h"

#include "support/TestProgram.h"
#include "support/TrayHost.h"

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusConnectionInterface>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusVariant>
#include <QtGui/QImage>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

const QString kWatcher = u"org.kde.StatusNotifierWatcher"_s;
const QString kItem = u"org.kde.StatusNotifierItem"_s;
const QString kProperties = u"org.freedesktop.DBus.Properties"_s;

} // namespace

/// The part of a panel that items register with.
class FakeWatcher : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered MEMBER hostRegistered)

public:
    bool hostRegistered = true;
    QStringList registered;

    explicit FakeWatcher(QDBusConnection on) : connection(std::move(on))
    {
        connection.registerObject(u"/StatusNotifierWatcher"_s, this,
                                  QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties |
                                      QDBusConnection::ExportAllSignals);
        connection.registerService(kWatcher);
    }

    ~FakeWatcher() override
    {
        connection.unregisterService(kWatcher);
        connection.unregisterObject(u"/StatusNotifierWatcher"_s);
    }

public Q_SLOTS:

    void RegisterStatusNotifierItem(const QString& service) { registered << service; } // NOLINT

Q_SIGNALS:
    void StatusNotifierHostRegistered(); // NOLINT

private:
    QDBusConnection connection;
};

class StatusNotifierItemTest : public QObject {
    Q_OBJECT

public Q_SLOTS:

    void noteSignal(const QDBusMessage& message) { _signals << message.member(); }

private Q_SLOTS:

    void init()
    {
        _bus = std::make_unique<PrivateBus>();
        if (!_bus->isUp()) {
            QSKIP("There is no dbus-daemon to start");
        }
    }

    void cleanup() { _bus.reset(); }

    void itemRegistersWithTheWatcherThatIsThere()
    {
        FakeWatcher watcher(_bus->connect());
        TrayProgram program;
        QSignalSpy taken(&program.item, &StatusNotifierItem::takenChanged);
        QTRY_COMPARE(watcher.registered.size(), 1);
        QVERIFY(watcher.registered.constFirst().startsWith(u"org.kde.StatusNotifierItem-"_s));
        QTRY_COMPARE(taken.count(), 1);
        QCOMPARE(taken.at(0).at(0).toBool(), true);
    }

    void itemRegistersWithAWatcherThatComesLater()
    {
        TrayProgram program;
        QDBusConnection panel = _bus->connect();
        QSignalSpy taken(&program.item, &StatusNotifierItem::takenChanged);
        FakeWatcher watcher(panel);
        QTRY_COMPARE(watcher.registered.size(), 1);
        QTRY_COMPARE(taken.count(), 1);
    }

    void itemRegistersAgainAfterAPanelRestart()
    {
        TrayProgram program;
        QSignalSpy taken(&program.item, &StatusNotifierItem::takenChanged);
        for (int round = 1; round <= 3; ++round) {
            FakeWatcher watcher(_bus->connect());
            QTRY_COMPARE(watcher.registered.size(), 1);
            QTRY_COMPARE(taken.count(), 2 * round - 1);
        }
        QTRY_COMPARE(taken.count(), 6);
        QCOMPARE(taken.constLast().at(0).toBool(), false);
    }

    void watcherWithoutAHostHasNotTakenTheItem()
    {
        FakeWatcher watcher(_bus->connect());
        watcher.hostRegistered = false;
        TrayProgram program;
        QSignalSpy taken(&program.item, &StatusNotifierItem::takenChanged);
        QTRY_COMPARE(watcher.registered.size(), 1);
        watcher.hostRegistered = true;
        Q_EMIT watcher.StatusNotifierHostRegistered();
        QTRY_COMPARE(taken.count(), 1);
        QCOMPARE(taken.at(0).at(0).toBool(), true);
    }

    void itemTellsNamesWordsAndPlaces()
    {
        TrayProgram program(TrayIcon("/opt/Ferrobank.app/Contents/Resources"));
        program.item.setFace({.title = u"Ferrobank"_s, .toolTip = u"1 GB used"_s, .needsAttention = false});
        const TrayHost host{_bus->connect(), program.name()};
        QCOMPARE(host.item(u"Id"_s).toString(), u"org.ferrobank.Ferrobank"_s);
        QCOMPARE(host.item(u"Title"_s).toString(), u"Ferrobank"_s);
        QCOMPARE(host.item(u"Status"_s).toString(), u"Active"_s);
        QCOMPARE(host.item(u"Category"_s).toString(), u"SystemServices"_s);
        QCOMPARE(host.item(u"ItemIsMenu"_s).toBool(), false);
        QCOMPARE(host.item(u"IconName"_s).toString(), u"org.ferrobank.Ferrobank-symbolic"_s);
        QCOMPARE(host.item(u"IconThemePath"_s).toString(), u"/opt/Ferrobank.app/Contents/Resources/icons"_s);
        QCOMPARE(host.item(u"Menu"_s).value<QDBusObjectPath>().path(), u"/MenuBar"_s);
        const auto toolTip = host.item(u"ToolTip"_s).value<QDBusArgument>();
        QString icon;
        QString title;
        QString text;
        toolTip.beginStructure();
        toolTip >> icon;
        toolTip.beginArray();
        toolTip.endArray();
        toolTip >> title >> text;
        toolTip.endStructure();
        QCOMPARE(title, u"Ferrobank"_s);
        QCOMPARE(text, u"1 GB used"_s);
    }

    void panelsThatPaintTheFileGetPicturesAndNoName()
    {
        TrayProgram program(TrayIcon("/opt/Ferrobank.app/Contents/Resources", TrayIcon::Look::Drawn));
        const TrayHost host{_bus->connect(), program.name()};
        QCOMPARE(host.item(u"IconName"_s).toString(), QString());
        QCOMPARE(host.item(u"AttentionIconName"_s).toString(), QString());
        for (const QString& colouring : {u"KDE"_s, u"GNOME"_s, u"ubuntu:GNOME"_s, u"XFCE"_s, u"X-Cinnamon"_s})
        {
            QCOMPARE(TrayIcon::lookFor(colouring), TrayIcon::Look::Named);
        }
        for (const QString& painting : {u"MATE"_s, u"LXQt"_s, u"sway"_s, QString()}) {
            QCOMPARE(TrayIcon::lookFor(painting), TrayIcon::Look::Drawn);
        }
    }

    void allPropertiesCanBeReadAtOnce()
    {
        TrayProgram program;
        const TrayHost host{_bus->connect(), program.name()};
        const QDBusMessage reply = PrivateBus::call(host.connection, host.service, u"/StatusNotifierItem"_s,
                                                    kProperties, u"GetAll"_s, {kItem});
        QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
        QCOMPARE(qdbus_cast<QVariantMap>(reply.arguments().value(0)).size(), 16);
    }

    void attentionChangesShapeStatusAndWords()
    {
        TrayProgram program;
        const TrayHost host{_bus->connect(), program.name()};
        QVERIFY(
            listen(host, u"/StatusNotifierItem"_s, kItem, {u"NewIcon"_s, u"NewTitle"_s, u"NewToolTip"_s}));
        program.item.setFace(
            {.title = u"Ferrobank · Needs attention"_s, .toolTip = u"x"_s, .needsAttention = true});
        QTRY_COMPARE(_signals.size(), 3);
        QCOMPARE(host.item(u"Status"_s).toString(), u"NeedsAttention"_s);
        QCOMPARE(host.item(u"IconName"_s).toString(), u"org.ferrobank.Ferrobank-attention-symbolic"_s);
        QCOMPARE(host.item(u"Title"_s).toString(), u"Ferrobank · Needs attention"_s);
    }

    void equalFaceTellsNothing()
    {
        TrayProgram program;
        const TrayHost host{_bus->connect(), program.name()};
        const StatusItemFace face{.title = u"Ferrobank"_s, .toolTip = u"x"_s, .needsAttention = false};
        program.item.setFace(face);
        QVERIFY(
            listen(host, u"/StatusNotifierItem"_s, kItem, {u"NewIcon"_s, u"NewTitle"_s, u"NewToolTip"_s}));
        program.item.setFace(face);
        QCOMPARE(host.item(u"Title"_s).toString(), u"Ferrobank"_s); // after anything sent before it
        QVERIFY(_signals.isEmpty());
    }

    void picturesComeInNetworkByteOrder()
    {
        QTemporaryDir resources;
        QVERIFY(QDir(resources.path()).mkdir(u"tray"_s));
        QImage image(22, 22, QImage::Format_ARGB32);
        image.fill(QColor(0x11, 0x22, 0x33, 0x80));
        QVERIFY(image.save(resources.filePath(u"tray/org.ferrobank.Ferrobank-symbolic-22.png"_s)));
        const TrayIcon icon(resources.path().toStdString());
        QCOMPARE(icon.pixmaps(TrayIcon::Shape::Normal).size(), size_t{1});
        const TrayPixmap& pixmap = icon.pixmaps(TrayIcon::Shape::Normal).front();
        QCOMPARE(pixmap.width, 22);
        QCOMPARE(pixmap.argb.size(), 22 * 22 * 4);
        QCOMPARE(pixmap.argb.first(4), QByteArray::fromHex("80112233"));
        QVERIFY(icon.pixmaps(TrayIcon::Shape::NeedsAttention).empty());
    }

    void clickActivatesWithTheTokenOfThatClickOnly()
    {
        TrayProgram program;
        QSignalSpy activated(&program.item, &StatusItem::activated);
        const TrayHost host{_bus->connect(), program.name()};
        const auto call = [&](const QString& method, const QVariantList& arguments) {
            return PrivateBus::call(host.connection, host.service, u"/StatusNotifierItem"_s, kItem, method,
                                    arguments);
        };
        QCOMPARE(call(u"ProvideXdgActivationToken"_s, {u"token-7"_s}).type(), QDBusMessage::ReplyMessage);
        QCOMPARE(call(u"Activate"_s, {10, 20}).type(), QDBusMessage::ReplyMessage);
        QTRY_COMPARE(activated.count(), 1);
        QCOMPARE(activated.at(0).at(0).toString(), u"token-7"_s);
        call(u"SecondaryActivate"_s, {10, 20});
        QTRY_COMPARE(activated.count(), 2);
        QVERIFY(activated.at(1).at(0).toString().isEmpty());
    }

private:
    bool listen(const TrayHost& host, const QString& path, const QString& interface, const QStringList& names)
    {
        _signals.clear();
        bool connected = true;
        QDBusConnection connection = host.connection;
        for (const QString& name : names) {
            connected = connected && connection.connect(host.service, path, interface, name, this,
                                                        SLOT(noteSignal(QDBusMessage)));
        }
        // The bus has taken the match rules once it answers a further call.
        return connected && connection.interface()->isServiceRegistered(host.service).isValid();
    }

    std::unique_ptr<PrivateBus> _bus;
    QStringList _signals;
};

} // namespace ferrobank

FERROBANK_TEST(ferrobank::StatusNotifierItemTest)
#include "StatusNotifierItemTest.moc"
