#include "Platform/linux/tray/MenuChange.h"

#include "support/TestProgram.h"

#include <QtTest/QTest>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

MenuEntry button(int id, const QString& text)
{
    return {id, MenuEntry::Kind::Button, text, false};
}

} // namespace

class MenuChangeTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void equalListsAreNoChange()
    {
        const QList<MenuEntry> entries{button(1, u"One"_s), button(2, u"Two"_s)};
        QVERIFY(menuChange(entries, entries).none());
        QVERIFY(menuChange({}, {}).none());
    }

    void anotherTextIsAChangeOfThatEntryAlone()
    {
        const MenuChange change = menuChange({button(1, u"One"_s), button(2, u"Two"_s)},
                                             {button(1, u"One"_s), button(2, u"Zwei"_s)});
        QVERIFY(!change.order);
        QCOMPARE(change.changed, QList<int>{2});
    }

    void anotherMarkIsAChange()
    {
        const MenuEntry off{1, MenuEntry::Kind::Toggle, u"At Login"_s, false};
        MenuEntry on = off;
        on.checked = true;
        QCOMPARE(menuChange({off}, {on}).changed, QList<int>{1});
    }

    void entryThatComesOrGoesIsAChangeOfTheOrderOnly()
    {
        const QList<MenuEntry> two{button(1, u"One"_s), button(2, u"Two"_s)};
        const QList<MenuEntry> three{button(1, u"One"_s), button(3, u"New"_s), button(2, u"Two"_s)};
        for (const MenuChange& change : {menuChange(two, three), menuChange(three, two)}) {
            QVERIFY(change.order);
            QVERIFY(change.changed.isEmpty());
        }
    }

    void movedEntryIsAChangeOfTheOrder()
    {
        const MenuChange change = menuChange({button(1, u"One"_s), button(2, u"Two"_s)},
                                             {button(2, u"Two"_s), button(1, u"One"_s)});
        QVERIFY(change.order);
    }

    void orderAndLooksMayChangeTogether()
    {
        const MenuChange change =
            menuChange({button(1, u"One"_s)}, {button(1, u"Eins"_s), button(2, u"Two"_s)});
        QVERIFY(change.order);
        QCOMPARE(change.changed, QList<int>{1});
    }
};

} // namespace ferrobank

FERROBANK_TEST_WITHOUT_APPLICATION(ferrobank::MenuChangeTest)
#include "MenuChangeTest.moc"
