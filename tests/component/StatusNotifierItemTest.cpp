#include "Platform/linux/tray/StatusNotifierItem.h"

#include "support/PrivateBus.h"

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
const QString kMenu = u"com.canonical.dbusmenu"_s;
const QString kProperties = u"org.freedesktop.DBus.Properties"_s;

QList<MenuEntry> someEntries()
{
    return {{1, MenuEntry::Kind::Text, u"Ferrobank · Mounted"_s, false},
            {3, MenuEntry::Kind::Divider, {}, false},
            {4, MenuEntry::Kind::Button, u"Open under_score & more"_s, false},
            {10, MenuEntry::Kind::Toggle, u"Open Menu at Login"_s, true}};
}

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

/// The program's side, as the session composes it.
struct Program {
    std::unique_ptr<SessionBus> bus = SessionBus::open();
    StatusNotifierItem item;

    explicit Program(const TrayIcon& icon = TrayIcon("/nowhere")) : item(*bus, icon) { bus->attach(); }

    [[nodiscard]] QString name() const
    {
        const char* unique = nullptr;
        sd_bus_get_unique_name(bus->get(), &unique);
        return QString::fromLatin1(unique);
    }
};

/// A host's side.
struct Host {
    QDBusConnection connection;
    QString service;

    [[nodiscard]] QVariant property(const QString& interface, const QString& path, const QString& name) const
    {
        const QDBusMessage reply =
            PrivateBus::call(connection, service, path, kProperties, u"Get"_s, {interface, name});
        return reply.arguments().value(0).value<QDBusVariant>().variant();
    }

    [[nodiscard]] QVariant item(const QString& name) const
    {
        return property(kItem, u"/StatusNotifierItem"_s, name);
    }

    [[nodiscard]] QDBusMessage menu(const QString& method, const QVariantList& arguments) const
    {
        return PrivateBus::call(connection, service, u"/MenuBar"_s, kMenu, method, arguments);
    }

    struct Node {
        int id = 0;
        QVariantMap properties;
    };

    /// Revision and children of the root.
    [[nodiscard]] std::pair<uint, QList<Node>> layout() const
    {
        const QDBusMessage reply = menu(u"GetLayout"_s, {0, -1, QStringList()});
        const auto root = reply.arguments().value(1).value<QDBusArgument>();
        QList<Node> nodes;
        int id = 0;
        QVariantMap properties;
        root.beginStructure();
        root >> id >> properties;
        root.beginArray();
        while (!root.atEnd()) {
            QDBusVariant child;
            root >> child;
            const auto argument = child.variant().value<QDBusArgument>();
            Node node;
            argument.beginStructure();
            argument >> node.id >> node.properties;
            argument.endStructure();
            nodes << node;
        }
        root.endArray();
        root.endStructure();
        return {reply.arguments().value(0).toUInt(), nodes};
    }
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
        Program program;
        QSignalSpy taken(&program.item, &StatusNotifierItem::takenChanged);
        QTRY_COMPARE(watcher.registered.size(), 1);
        QVERIFY(watcher.registered.constFirst().startsWith(u"org.kde.StatusNotifierItem-"_s));
        QTRY_COMPARE(taken.count(), 1);
        QCOMPARE(taken.at(0).at(0).toBool(), true);
    }

    void itemRegistersWithAWatcherThatComesLater()
    {
        Program program;
        QDBusConnection panel = _bus->connect();
        QSignalSpy taken(&program.item, &StatusNotifierItem::takenChanged);
        FakeWatcher watcher(panel);
        QTRY_COMPARE(watcher.registered.size(), 1);
        QTRY_COMPARE(taken.count(), 1);
    }

    void itemRegistersAgainAfterAPanelRestart()
    {
        Program program;
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
        Program program;
        QSignalSpy taken(&program.item, &StatusNotifierItem::takenChanged);
        QTRY_COMPARE(watcher.registered.size(), 1);
        watcher.hostRegistered = true;
        Q_EMIT watcher.StatusNotifierHostRegistered();
        QTRY_COMPARE(taken.count(), 1);
        QCOMPARE(taken.at(0).at(0).toBool(), true);
    }

    void itemTellsNamesWordsAndPlaces()
    {
        Program program(TrayIcon("/opt/Ferrobank.app/Contents/Resources"));
        program.item.setFace({.title = u"Ferrobank"_s, .toolTip = u"1 GB used"_s, .needsAttention = false});
        const Host host{_bus->connect(), program.name()};
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

    void allPropertiesCanBeReadAtOnce()
    {
        Program program;
        const Host host{_bus->connect(), program.name()};
        const QDBusMessage reply = PrivateBus::call(host.connection, host.service, u"/StatusNotifierItem"_s,
                                                    kProperties, u"GetAll"_s, {kItem});
        QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
        QCOMPARE(qdbus_cast<QVariantMap>(reply.arguments().value(0)).size(), 16);
    }

    void attentionChangesShapeStatusAndWords()
    {
        Program program;
        const Host host{_bus->connect(), program.name()};
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
        Program program;
        const Host host{_bus->connect(), program.name()};
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
        Program program;
        QSignalSpy activated(&program.item, &StatusItem::activated);
        const Host host{_bus->connect(), program.name()};
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

    void menuIsReadAsItWasSet()
    {
        Program program;
        program.item.setMenu(someEntries());
        const Host host{_bus->connect(), program.name()};
        const auto [revision, nodes] = host.layout();
        QCOMPARE(nodes.size(), 4);
        QCOMPARE(nodes.at(0).id, 1);
        QCOMPARE(nodes.at(0).properties.value(u"label"_s).toString(), u"Ferrobank · Mounted"_s);
        QCOMPARE(nodes.at(0).properties.value(u"enabled"_s), QVariant(false));
        QCOMPARE(nodes.at(1).properties.value(u"type"_s).toString(), u"separator"_s);
        QCOMPARE(nodes.at(3).properties.value(u"toggle-type"_s).toString(), u"checkmark"_s);
        QCOMPARE(nodes.at(3).properties.value(u"toggle-state"_s).toInt(), 1);
        QVERIFY(!nodes.at(2).properties.contains(u"enabled"_s));
        QVERIFY(!nodes.at(2).properties.contains(u"shortcut"_s));
    }

    void noLetterOfALabelIsAMnemonic()
    {
        Program program;
        program.item.setMenu(someEntries());
        const Host host{_bus->connect(), program.name()};
        QCOMPARE(host.layout().second.at(2).properties.value(u"label"_s).toString(),
                 u"Open under__score & more"_s);
    }

    void menuIsReadAfreshBeforeItShows()
    {
        Program program;
        program.item.setMenu(someEntries());
        const Host host{_bus->connect(), program.name()};
        const uint before = host.layout().first;
        connect(&program.item, &StatusItem::aboutToShowMenu, this,
                [&] { program.item.setMenu(someEntries().first(2)); });
        const QDBusMessage reply = host.menu(u"AboutToShow"_s, {0});
        QCOMPARE(reply.arguments().value(0).toBool(), true);
        const auto [revision, nodes] = host.layout();
        QCOMPARE(nodes.size(), 2);
        QVERIFY(revision > before);
        QCOMPARE(host.menu(u"AboutToShow"_s, {0}).arguments().value(0).toBool(), false);
    }

    void changedTextTellsThatEntryAlone()
    {
        Program program;
        program.item.setMenu(someEntries());
        const Host host{_bus->connect(), program.name()};
        QVERIFY(listen(host, u"/MenuBar"_s, kMenu, {u"ItemsPropertiesUpdated"_s, u"LayoutUpdated"_s}));
        QList<MenuEntry> changed = someEntries();
        changed[0].text = u"Ferrobank · Starting…"_s;
        program.item.setMenu(changed);
        QTRY_COMPARE(_signals.size(), 1);
        QCOMPARE(_signals.constFirst(), u"ItemsPropertiesUpdated"_s);
    }

    void equalMenuTellsNothing()
    {
        Program program;
        program.item.setMenu(someEntries());
        const Host host{_bus->connect(), program.name()};
        QVERIFY(listen(host, u"/MenuBar"_s, kMenu, {u"ItemsPropertiesUpdated"_s, u"LayoutUpdated"_s}));
        program.item.setMenu(someEntries());
        (void)host.layout(); // after anything sent before it
        QVERIFY(_signals.isEmpty());
    }

    void chosenEntryArrivesAfterTheHostIsAnswered()
    {
        Program program;
        program.item.setMenu(someEntries());
        QSignalSpy chosen(&program.item, &StatusItem::chosen);
        const Host host{_bus->connect(), program.name()};
        const QVariantList click{4, u"clicked"_s, QVariant::fromValue(QDBusVariant(QString())), 0U};
        QCOMPARE(host.menu(u"Event"_s, click).type(), QDBusMessage::ReplyMessage);
        QTRY_COMPARE(chosen.count(), 1);
        QCOMPARE(chosen.at(0).at(0).toInt(), 4);
    }

    void textsDividersAndHoveringChooseNothing()
    {
        Program program;
        program.item.setMenu(someEntries());
        QSignalSpy chosen(&program.item, &StatusItem::chosen);
        const Host host{_bus->connect(), program.name()};
        const QVariant empty = QVariant::fromValue(QDBusVariant(QString()));
        QCOMPARE(host.menu(u"Event"_s, {1, u"clicked"_s, empty, 0U}).type(), QDBusMessage::ReplyMessage);
        QCOMPARE(host.menu(u"Event"_s, {3, u"clicked"_s, empty, 0U}).type(), QDBusMessage::ReplyMessage);
        QCOMPARE(host.menu(u"Event"_s, {4, u"hovered"_s, empty, 0U}).type(), QDBusMessage::ReplyMessage);
        QCOMPARE(host.menu(u"Event"_s, {0, u"opened"_s, empty, 0U}).type(), QDBusMessage::ReplyMessage);
        QCoreApplication::processEvents();
        QCOMPARE(chosen.count(), 0);
    }

    void eventOfAnEntryThatIsGoneIsAnError()
    {
        Program program;
        program.item.setMenu(someEntries());
        const Host host{_bus->connect(), program.name()};
        const QVariant empty = QVariant::fromValue(QDBusVariant(QString()));
        QCOMPARE(host.menu(u"Event"_s, {5, u"clicked"_s, empty, 0U}).type(), QDBusMessage::ErrorMessage);
        QCOMPARE(host.menu(u"GetProperty"_s, {5, u"label"_s}).type(), QDBusMessage::ErrorMessage);
    }

    void singlePropertiesAndGroupsCanBeRead()
    {
        Program program;
        program.item.setMenu(someEntries());
        const Host host{_bus->connect(), program.name()};
        const QDBusMessage reply = host.menu(u"GetProperty"_s, {10, u"toggle-state"_s});
        QCOMPARE(reply.arguments().value(0).value<QDBusVariant>().variant().toInt(), 1);
        const QVariant ids = QVariant::fromValue(QList<int>{1, 4, 99});
        const QDBusMessage group = host.menu(u"GetGroupProperties"_s, {ids, QStringList{u"label"_s}});
        const auto list = group.arguments().value(0).value<QDBusArgument>();
        int count = 0;
        list.beginArray();
        while (!list.atEnd()) {
            int id = 0;
            QVariantMap properties;
            list.beginStructure();
            list >> id >> properties;
            list.endStructure();
            QCOMPARE(properties.keys(), QStringList{u"label"_s});
            ++count;
        }
        list.endArray();
        QCOMPARE(count, 2);
    }

    void repeatTellsTheLooksOfAllEntries()
    {
        Program program;
        program.item.setMenu(someEntries());
        const Host host{_bus->connect(), program.name()};
        QVERIFY(listen(host, u"/MenuBar"_s, kMenu, {u"ItemsPropertiesUpdated"_s, u"LayoutUpdated"_s}));
        program.item.repeatMenu();
        QTRY_COMPARE(_signals, QStringList{u"ItemsPropertiesUpdated"_s});
    }

private:
    bool listen(const Host& host, const QString& path, const QString& interface, const QStringList& names)
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

QTEST_GUILESS_MAIN(ferrobank::StatusNotifierItemTest)
#include "StatusNotifierItemTest.moc"
