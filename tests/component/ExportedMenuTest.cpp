#include "Platform/linux/tray/ExportedMenu.h"

#include "support/TestProgram.h"
#include "support/TrayHost.h"

#include <QtDBus/QDBusConnectionInterface>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

const QString kMenu = u"com.canonical.dbusmenu"_s;

QList<MenuEntry> someEntries()
{
    return {{1, MenuEntry::Kind::Text, u"Ferrobank · Mounted"_s, false},
            {3, MenuEntry::Kind::Divider, {}, false},
            {4, MenuEntry::Kind::Button, u"Open under_score & more"_s, false},
            {10, MenuEntry::Kind::Toggle, u"Open Menu at Login"_s, true}};
}

} // namespace

class ExportedMenuTest : public QObject {
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

    void menuIsReadAsItWasSet()
    {
        TrayProgram program;
        program.item.setMenu(someEntries());
        const TrayHost host{_bus->connect(), program.name()};
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
        TrayProgram program;
        program.item.setMenu(someEntries());
        const TrayHost host{_bus->connect(), program.name()};
        QCOMPARE(host.layout().second.at(2).properties.value(u"label"_s).toString(),
                 u"Open under__score & more"_s);
    }

    void menuIsReadAfreshBeforeItShows()
    {
        TrayProgram program;
        program.item.setMenu(someEntries());
        const TrayHost host{_bus->connect(), program.name()};
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
        TrayProgram program;
        program.item.setMenu(someEntries());
        const TrayHost host{_bus->connect(), program.name()};
        QVERIFY(listen(host, u"/MenuBar"_s, kMenu, {u"ItemsPropertiesUpdated"_s, u"LayoutUpdated"_s}));
        QList<MenuEntry> changed = someEntries();
        changed[0].text = u"Ferrobank · Starting…"_s;
        program.item.setMenu(changed);
        QTRY_COMPARE(_signals.size(), 1);
        QCOMPARE(_signals.constFirst(), u"ItemsPropertiesUpdated"_s);
    }

    void equalMenuTellsNothing()
    {
        TrayProgram program;
        program.item.setMenu(someEntries());
        const TrayHost host{_bus->connect(), program.name()};
        QVERIFY(listen(host, u"/MenuBar"_s, kMenu, {u"ItemsPropertiesUpdated"_s, u"LayoutUpdated"_s}));
        program.item.setMenu(someEntries());
        (void)host.layout(); // after anything sent before it
        QVERIFY(_signals.isEmpty());
    }

    void chosenEntryArrivesAfterTheHostIsAnswered()
    {
        TrayProgram program;
        program.item.setMenu(someEntries());
        QSignalSpy chosen(&program.item, &StatusItem::chosen);
        const TrayHost host{_bus->connect(), program.name()};
        const QVariantList click{4, u"clicked"_s, QVariant::fromValue(QDBusVariant(QString())), 0U};
        QCOMPARE(host.menu(u"Event"_s, click).type(), QDBusMessage::ReplyMessage);
        QTRY_COMPARE(chosen.count(), 1);
        QCOMPARE(chosen.at(0).at(0).toInt(), 4);
    }

    void textsDividersAndHoveringChooseNothing()
    {
        TrayProgram program;
        program.item.setMenu(someEntries());
        QSignalSpy chosen(&program.item, &StatusItem::chosen);
        const TrayHost host{_bus->connect(), program.name()};
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
        TrayProgram program;
        program.item.setMenu(someEntries());
        const TrayHost host{_bus->connect(), program.name()};
        const QVariant empty = QVariant::fromValue(QDBusVariant(QString()));
        QCOMPARE(host.menu(u"Event"_s, {5, u"clicked"_s, empty, 0U}).type(), QDBusMessage::ErrorMessage);
        QCOMPARE(host.menu(u"GetProperty"_s, {5, u"label"_s}).type(), QDBusMessage::ErrorMessage);
    }

    void singlePropertiesAndGroupsCanBeRead()
    {
        TrayProgram program;
        program.item.setMenu(someEntries());
        const TrayHost host{_bus->connect(), program.name()};
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
        TrayProgram program;
        program.item.setMenu(someEntries());
        const TrayHost host{_bus->connect(), program.name()};
        QVERIFY(listen(host, u"/MenuBar"_s, kMenu, {u"ItemsPropertiesUpdated"_s, u"LayoutUpdated"_s}));
        program.item.repeatMenu();
        QTRY_COMPARE(_signals, QStringList{u"ItemsPropertiesUpdated"_s});
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

FERROBANK_TEST(ferrobank::ExportedMenuTest)
#include "ExportedMenuTest.moc"
