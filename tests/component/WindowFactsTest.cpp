#include "Ferrobank/FerrobankApp/Windows.h"
#include "support/TestProgram.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QWindow>
#include <QtTest/QTest>

#include <memory>

namespace ferrobank {

class WindowFactsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void withoutWindowsThereAreNoFacts() { QVERIFY(presentWindows().empty()); }

    void windowOfTheProgramCanBecomeMain()
    {
        QWindow window;
        window.show();
        const std::vector<WindowFacts> expected{{.visible = true, .canBecomeMain = true}};
        QVERIFY(presentWindows() == expected);
        window.hide();
        QVERIFY(!presentWindows().front().visible);
    }

    void panelsMenusAndDialogsCannotBecomeMain_data()
    {
        QTest::addColumn<int>("type");
        QTest::newRow("dialog") << static_cast<int>(Qt::Dialog);
        QTest::newRow("panel") << static_cast<int>(Qt::Tool);
        QTest::newRow("menu") << static_cast<int>(Qt::Popup);
        QTest::newRow("tool tip") << static_cast<int>(Qt::ToolTip);
    }

    void panelsMenusAndDialogsCannotBecomeMain()
    {
        QFETCH(int, type);
        QWindow window;
        window.setFlags(static_cast<Qt::WindowFlags>(type));
        window.show();
        QVERIFY(presentWindows().front().visible);
        QVERIFY(!presentWindows().front().canBecomeMain);
    }

    void updateWaitsForTheMainWindowOnly()
    {
        QWindow menu;
        menu.setFlags(Qt::Popup);
        menu.show();
        QVERIFY(mayInstallUpdateNow(true, presentWindows()));
        QWindow main;
        main.show();
        QVERIFY(!mayInstallUpdateNow(true, presentWindows()));
        main.hide();
        QVERIFY(mayInstallUpdateNow(true, presentWindows()));
        QVERIFY(!mayInstallUpdateNow(false, presentWindows()));
    }
};

} // namespace ferrobank

FERROBANK_TEST_WITH_WINDOWS(ferrobank::WindowFactsTest)

#include "WindowFactsTest.moc"
