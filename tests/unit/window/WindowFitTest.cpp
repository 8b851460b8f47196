#include "Ferrobank/Components/WindowFit.h"

#include "support/TestProgram.h"

#include <QtTest/QTest>

using namespace ferrobank;

/// Where a window stays when its content changes.
class WindowFitTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void aWindowStaysOnTheDisplay_data()
    {
        QTest::addColumn<QRect>("window");
        QTest::addColumn<QSize>("wanted");
        QTest::addColumn<QPoint>("corner");
        const auto row = [](const char* name, const QRect& window, const QSize& wanted,
                            const QPoint& corner) { QTest::newRow(name) << window << wanted << corner; };
        row("room below", {200, 100, 500, 300}, {500, 500}, {200, 100});
        row("as large as the room", {200, 100, 500, 300}, {500, 640}, {200, 100});
        row("one pixel too many", {200, 100, 500, 300}, {500, 641}, {200, 99});
        row("at the lower edge", {200, 440, 500, 300}, {500, 500}, {200, 240});
        row("never above the upper edge", {200, 440, 500, 300}, {500, 900}, {200, 40});
        row("at the far edge", {500, 100, 500, 300}, {600, 300}, {400, 100});
        row("both edges at once", {500, 440, 500, 300}, {600, 400}, {400, 340});
        row("smaller: stays", {500, 240, 500, 500}, {400, 300}, {500, 240});
        row("pushed over the lower edge by hand: no further", {200, 600, 500, 300}, {500, 350}, {200, 550});
        row("pushed over it, then smaller: stays", {200, 600, 500, 300}, {500, 250}, {200, 600});
        row("pushed above the upper edge by hand: stays", {200, -60, 500, 300}, {500, 900}, {200, -60});
        row("of the same size: stays wherever it is", {900, 700, 500, 300}, {500, 300}, {900, 700});
    }

    void aWindowStaysOnTheDisplay()
    {
        QFETCH(QRect, window);
        QFETCH(QSize, wanted);
        QFETCH(QPoint, corner);
        // A panel takes the upper 40 pixels and the lower 60.
        const QRect available(0, 40, 1000, 700);
        QCOMPARE(WindowFit::place(window, wanted, available), QRect(corner, wanted));
    }

    void aSecondDisplayHasEdgesOfItsOwn()
    {
        const QRect available(1920, -200, 1000, 700);
        QCOMPARE(WindowFit::place({2500, 300, 400, 200}, {500, 400}, available), QRect(2420, 100, 500, 400));
    }
};

FERROBANK_TEST(WindowFitTest)
#include "WindowFitTest.moc"
