#include "support/TestProgram.h"
#include "ui/WindowTest.h"

#include <QtGui/QAccessible>

#include <functional>

using namespace Qt::StringLiterals;
using namespace ferrobank;
using State = CheckItem::State;

/// The screens as assistive technology sees and works them.
class AccessibilityTest : public WindowTest {
    Q_OBJECT

private:
    using Interface = QAccessibleInterface;

    void eachNode(Interface* node, const std::function<void(Interface*)>& visit)
    {
        visit(node);
        for (int index = 0; index < node->childCount(); ++index) {
            if (Interface* child = node->child(index); child != nullptr && !child->state().invisible) {
                eachNode(child, visit);
            }
        }
    }

    Interface* node(QAccessible::Role role, const QString& name)
    {
        Interface* found = nullptr;
        eachNode(QAccessible::queryAccessibleInterface(&window()), [&](Interface* each) {
            if (found == nullptr && each->role() == role && each->text(QAccessible::Name) == name) {
                found = each;
            }
        });
        return found;
    }

    static void act(Interface* on, const QString& action) { on->actionInterface()->doAction(action); }

    void openDashboard()
    {
        stage().seam.finishSetup();
        stage().seam.cli.answerStatus(mountedStatus());
        start();
        model().checkRows()->replaceAll({{u"one"_s, u"One"_s, State::Pass, {}, {}, {}}});
        openWindow();
    }

private Q_SLOTS:

    void initTestCase() { QAccessible::setActive(true); }

    void everyControlHasAName()
    {
        openDashboard();
        int controls = 0;
        eachNode(QAccessible::queryAccessibleInterface(&window()), [&](Interface* each) {
            const bool isControl =
                each->role() == QAccessible::Button || each->role() == QAccessible::CheckBox;
            if (isControl) {
                ++controls;
                QVERIFY(!each->text(QAccessible::Name).isEmpty());
                QVERIFY(each->state().focusable);
            }
        });
        QCOMPARE(controls, 8);
    }

    void theDashboardTellsItsFigures()
    {
        openDashboard();
        QVERIFY(node(QAccessible::Heading, u"Ferrobank"_s));
        QVERIFY(node(QAccessible::StaticText, u"Mounted"_s));
        QVERIFY(node(QAccessible::StaticText, u"7.5 GB"_s));
        Interface* tile = node(QAccessible::Grouping, u"Files on drive"_s);
        QVERIFY(tile);
        QCOMPARE(tile->childCount(), 1);
        QCOMPARE(tile->child(0)->text(QAccessible::Name), u"10 GB"_s);
        QVERIFY(node(QAccessible::StaticText, u"1 of 1 checks passed"_s));
    }

    void anAccessiblePressPressesAButton()
    {
        openDashboard();
        Interface* button = node(QAccessible::Button, u"Show in Finder"_s);
        QVERIFY(button);
        act(button, QAccessibleActionInterface::pressAction());
        QCOMPARE(stage().seam.workspace.openedPaths, QStringList{FakeSeam::kMountpoint});
    }

    void anAccessibleToggleIsHeardByTheModel()
    {
        openDashboard();
        Interface* toggle = node(QAccessible::CheckBox, u"Open the Ferrobank menu at login"_s);
        QVERIFY(toggle);
        QVERIFY(!toggle->state().checked);
        act(toggle, QAccessibleActionInterface::toggleAction());
        QVERIFY(model().menuOpensAtLogin());
        QVERIFY(toggle->state().checked);
    }

    void aRowOfTheChecksTellsItsStateAndItsReason()
    {
        start();
        model().setScreen(Screen::checks());
        model().checkRows()->replaceAll(
            {{u"login"_s, u"Starts at login"_s, State::Fail, u"It is off."_s, u"Turn it on."_s, {}}});
        openWindow();
        Interface* row = node(QAccessible::ListItem, u"Starts at login: failed"_s);
        QVERIFY(row);
        QCOMPARE(row->text(QAccessible::Description), u"It is off. Turn it on."_s);
        QVERIFY(node(QAccessible::Graphic, u"failed"_s));
    }

    void aChangedRowIsReadOut()
    {
        start();
        model().setScreen(Screen::checks());
        CheckItem row{u"login"_s, u"Starts at login"_s, State::Running, {}, {}, {}};
        model().checkRows()->replaceAll({row});
        openWindow();
        row.state = State::Pass;
        model().checkRows()->put(row);
        QVERIFY(node(QAccessible::AlertMessage, u"Starts at login: passed"_s));
    }

    void rowsThatAppearAreNotReadOut()
    {
        start();
        model().setScreen(Screen::checks());
        model().checkRows()->replaceAll({{u"login"_s, u"Starts at login"_s, State::Fail, {}, {}, {}}});
        openWindow();
        eachNode(QAccessible::queryAccessibleInterface(&window()),
                 [](Interface* each) { QVERIFY(each->role() != QAccessible::AlertMessage); });
        QVERIFY(node(QAccessible::List, u"Checks"_s));
    }

    void aDimmedSwitchTellsWhyToo()
    {
        stage().seam.registry.agent.status = LoginServiceStatus::NotFound;
        start();
        show(stage().loginItems());
        Interface* toggle = node(QAccessible::CheckBox, u"Ferrobank drive"_s);
        QVERIFY(toggle);
        QCOMPARE(toggle->text(QAccessible::Description),
                 u"dimmed: Not available: a part of Ferrobank is missing."_s);
    }

    void theSavingsBarTellsItsShare()
    {
        openDashboard();
        Interface* bar = node(QAccessible::ProgressBar, u"Stored on disk"_s);
        QVERIFY(bar);
        QCOMPARE(bar->text(QAccessible::Description), u"25 %"_s);
    }

    void spinnersSayWhatIsInProgress()
    {
        stage().seam.finishSetup();
        stage().seam.cli.hold(FakeCLI::kStatus);
        start();
        openWindow();
        QVERIFY(node(QAccessible::Animation, u"Reading the drive's state"_s));
    }
};

FERROBANK_TEST_WITH_WINDOWS(AccessibilityTest)
#include "AccessibilityTest.moc"
