#include "Platform/linux/tray/MenuMirror.h"

#include "support/TestProgram.h"

#include <QtGui/QAction>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

QList<MenuEntry> someEntries()
{
    return {{1, MenuEntry::Kind::Text, u"State"_s, false},
            {3, MenuEntry::Kind::Divider, {}, false},
            {4, MenuEntry::Kind::Button, u"Open & see"_s, false},
            {10, MenuEntry::Kind::Toggle, u"At Login"_s, true}};
}

} // namespace

class MenuMirrorTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void entriesLookAsTheyAre()
    {
        MenuMirror mirror;
        mirror.setEntries(someEntries());
        const QList<QAction*> actions = mirror.menu().actions();
        QCOMPARE(actions.size(), 4);
        QVERIFY(!actions.at(0)->isEnabled());
        QVERIFY(actions.at(1)->isSeparator());
        QCOMPARE(actions.at(2)->text(), u"Open && see"_s);
        QVERIFY(actions.at(3)->isCheckable());
        QVERIFY(actions.at(3)->isChecked());
        for (const QAction* action : actions) {
            QVERIFY(action->shortcut().isEmpty());
        }
    }

    void entriesThatStayKeepTheirActions()
    {
        MenuMirror mirror;
        mirror.setEntries(someEntries());
        QAction* open = mirror.menu().actions().at(2);
        QList<MenuEntry> fewer = someEntries();
        fewer.removeFirst();
        fewer.removeFirst();
        mirror.setEntries(fewer);
        QCOMPARE(mirror.menu().actions().size(), 2);
        QCOMPARE(mirror.menu().actions().at(0), open);
        mirror.setEntries(someEntries());
        QCOMPARE(mirror.menu().actions().size(), 4);
        QCOMPARE(mirror.menu().actions().at(2), open);
        QCOMPARE(mirror.menu().actions().at(0)->text(), u"State"_s);
        QVERIFY(mirror.menu().actions().at(1)->isSeparator());
    }

    void entryComesInItsPlace()
    {
        MenuMirror mirror;
        mirror.setEntries(someEntries());
        QList<MenuEntry> more = someEntries();
        more.insert(3, {6, MenuEntry::Kind::Button, u"Install"_s, false});
        mirror.setEntries(more);
        QStringList texts;
        for (const QAction* action : mirror.menu().actions()) {
            texts << action->text();
        }
        const QStringList expected{u"State"_s, QString(), u"Open && see"_s, u"Install"_s, u"At Login"_s};
        QCOMPARE(texts, expected);
    }

    void clickTellsTheEntry()
    {
        MenuMirror mirror;
        mirror.setEntries(someEntries());
        QSignalSpy chosen(&mirror, &MenuMirror::chosen);
        mirror.menu().actions().at(2)->trigger();
        mirror.menu().actions().at(0)->trigger();
        QCOMPARE(chosen.count(), 1);
        QCOMPARE(chosen.at(0).at(0).toInt(), 4);
    }

    void repeatUndoesWhatAClickMadeOfTheMark()
    {
        MenuMirror mirror;
        mirror.setEntries(someEntries());
        QAction* toggle = mirror.menu().actions().at(3);
        toggle->trigger();
        QVERIFY(!toggle->isChecked());
        mirror.repeat();
        QVERIFY(toggle->isChecked());
    }
};

} // namespace ferrobank

FERROBANK_TEST_WITH_WINDOWS(ferrobank::MenuMirrorTest)

#include "MenuMirrorTest.moc"
