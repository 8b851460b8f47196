#include "Ferrobank/Components/Theme.h"
#include "support/TestProgram.h"
#include "ui/WindowTest.h"

#include <QtGui/QScreen>

using namespace Qt::StringLiterals;
using namespace ferrobank;

/// The window itself: which screen it shows, its size, and its life.
class RootViewTest : public WindowTest {
    Q_OBJECT

private:
    void useMountedDrive()
    {
        stage().seam.finishSetup();
        stage().seam.cli.answerStatus(mountedStatus());
    }

private Q_SLOTS:

    void theWindowIsTitledFerrobankAndHasNoFrame()
    {
        start();
        openWindow();
        QCOMPARE(window().title(), u"Ferrobank"_s);
        QVERIFY(window().flags().testFlag(Qt::FramelessWindowHint));
    }

    void eachScreenIsShownForItsValue()
    {
        useMountedDrive();
        start();
        openWindow();
        QVERIFY(shows(u"state"_s));
        model().setScreen(Screen::checks());
        QCOMPARE(textOf(u"pageTitle"_s), u"Ferrobank checks"_s);
        model().setScreen(Screen::uninstall());
        QCOMPARE(textOf(u"pageTitle"_s), u"Uninstall Ferrobank"_s);
        model().setScreen(Screen::onboarding(Screen::Consent));
        QCOMPARE(textOf(u"pageTitle"_s), u"Before setup"_s);
        model().setScreen(Screen::dashboard());
        QVERIFY(shows(u"state"_s));
    }

    void fromChecksToDashboardTheWindowWidensAndBackItNarrows()
    {
        useMountedDrive();
        openOn(Screen::checks());
        QCOMPARE(window().width(), 520 + 64);
        model().setScreen(Screen::dashboard());
        QTRY_COMPARE(window().width(), 620 + 64);
        model().setScreen(Screen::checks());
        QTRY_COMPARE(window().width(), 520 + 64);
    }

    void theContentHasThirtyTwoPixelsAround()
    {
        openOn(Screen::onboarding(Screen::Consent));
        const QQuickItem& title = item(u"pageTitle"_s);
        QCOMPARE(title.mapToScene(QPointF(0, 0)), QPointF(32, 32));
        const QQuickItem& button = item(u"allow"_s);
        const QPointF end = button.mapToScene(QPointF(button.width(), button.height()));
        QCOMPARE(end.x(), window().width() - 32.0);
        QVERIFY(qAbs(end.y() - (window().height() - 32.0)) < 1);
    }

    void theHeightFollowsTheContentAndCannotBeDragged()
    {
        openOn(Screen::onboarding(Screen::Consent));
        const int withPassword = window().height();
        click(u"installCLI"_s);
        QTRY_VERIFY(window().height() < withPassword);
        QCOMPARE(window().minimumSize(), window().size());
        QCOMPARE(window().maximumSize(), window().size());
    }

    void theWindowIsNeverTallerThanTheDisplay()
    {
        start();
        model().setScreen(Screen::checks());
        QList<CheckItem> rows;
        for (int number = 0; number < 200; ++number) {
            rows << CheckItem{
                QString::number(number), u"Part of the store"_s, CheckItem::State::Pass, {}, {}, {}};
        }
        model().checkRows()->replaceAll(rows);
        openWindow();
        QTRY_VERIFY(window().height() <= window().screen()->availableSize().height());
        const QQuickItem& done = item(u"done"_s);
        const QPointF end = done.mapToScene(QPointF(done.width(), done.height()));
        QVERIFY(end.y() <= window().height());
    }

    void aWindowThatGrowsNearTheLowerEdgeMovesUp()
    {
        openOn(Screen::onboarding(Screen::Welcome));
        const QRect display = window().screen()->availableGeometry();
        const int small = window().height();
        window().setPosition(100, display.y() + display.height() - small);
        QTRY_COMPARE(window().y(), display.y() + display.height() - small);
        model().setScreen(Screen::onboarding(Screen::Consent));
        QTRY_VERIFY(window().height() > small);
        QCOMPARE(window().y() + window().height(), display.y() + display.height());
        QCOMPARE(window().x(), 100);
    }

    void aWindowThatWidensNearTheFarEdgeMovesBack()
    {
        useMountedDrive();
        openOn(Screen::checks());
        const QRect display = window().screen()->availableGeometry();
        window().setPosition(display.x() + display.width() - window().width(), display.y() + 20);
        model().setScreen(Screen::dashboard());
        QTRY_COMPARE(window().width(), 620 + 64);
        QCOMPARE(window().x() + window().width(), display.x() + display.width());
    }

    void aContentTallerThanTheDisplayScrollsToTheFocus()
    {
        useMountedDrive();
        openOn(Screen::dashboard());
        Theme::of(*stage().mainWindow().engine()).setDisplayHeight(300);
        QTRY_COMPARE(window().contentItem()->height(), 300.0);
        QQuickItem& button = item(u"uninstall"_s);
        const auto bottom = [&button] { return button.mapToScene(QPointF(0, button.height())).y(); };
        QVERIFY(bottom() > 300);
        button.forceActiveFocus(Qt::TabFocusReason);
        QVERIFY(bottom() <= 300);
        press(Qt::Key_PageUp);
        press(Qt::Key_PageUp);
        QVERIFY(bottom() > 300);
        press(Qt::Key_PageDown);
        press(Qt::Key_PageDown);
        QVERIFY(bottom() <= 300);
    }

    void closingFromTheChecksKeepsTheScreen()
    {
        useMountedDrive();
        openOn(Screen::checks());
        QTRY_VERIFY(shows(u"done"_s));
        click(u"done"_s);
        QTRY_COMPARE(stage().host.closings, 1);
        QCOMPARE(model().screen(), Screen::checks());
        QVERIFY(!stage().mainWindow().isVisible());
    }

    void theCloseControlClosesAndTheEngineGoes()
    {
        start();
        openWindow();
        click(u"close"_s);
        QTRY_COMPARE(stage().host.closings, 1);
        QVERIFY(stage().mainWindow().engine() == nullptr);
        QVERIFY(stage().mainWindow().window() == nullptr);
    }

    void theMinimiseControlMinimises()
    {
        start();
        openWindow();
        click(u"minimise"_s);
        QTRY_COMPARE(window().visibility(), QWindow::Minimized);
        QVERIFY(!stage().mainWindow().isVisible());
        stage().mainWindow().open({});
        QTRY_VERIFY(stage().mainWindow().isVisible());
    }

    void theCloseShortcutClosesTheWindow()
    {
        start();
        openWindow();
        press(Qt::Key_W, Qt::ControlModifier);
        QTRY_COMPARE(stage().host.closings, 1);
    }

    void openingTwiceKeepsOneWindow()
    {
        start();
        openWindow();
        const QWindow* first = stage().mainWindow().window();
        stage().mainWindow().open({});
        QCOMPARE(stage().mainWindow().window(), first);
    }

    void openingAgainRightAfterClosingWorks()
    {
        start();
        openWindow();
        stage().mainWindow().close();
        stage().mainWindow().open({});
        QVERIFY(stage().mainWindow().isVisible());
        QCoreApplication::processEvents();
        QVERIFY(stage().mainWindow().isVisible());
        QCOMPARE(stage().host.closings, 1);
    }

    void openingAndClosingFiftyTimesLeavesNothingBehind()
    {
        useMountedDrive();
        start();
        for (int round = 0; round < 50; ++round) {
            stage().mainWindow().open({});
            QVERIFY(stage().mainWindow().isVisible());
            stage().mainWindow().close();
            QTRY_COMPARE(stage().host.closings, round + 1);
            QVERIFY(stage().mainWindow().engine() == nullptr);
        }
        QCOMPARE(QGuiApplication::allWindows().size(), 0);
    }

    void screensFadeIntoEachOtherAndOnlyTheNewOneAnswers()
    {
        useMountedDrive();
        openOn(Screen::onboarding(Screen::Done));
        Theme::of(*stage().mainWindow().engine()).setReducedMotion(false);
        click(u"openFerrobank"_s);
        QTRY_VERIFY(shows(u"state"_s));
        QTRY_VERIFY(!shows(u"openFerrobank"_s));
        QVERIFY(shows(u"state"_s));
    }

    void twoQuickChangesEndOnTheLastScreen()
    {
        useMountedDrive();
        openOn(Screen::dashboard());
        Theme::of(*stage().mainWindow().engine()).setReducedMotion(false);
        model().setScreen(Screen::checks());
        model().setScreen(Screen::uninstall());
        QTRY_COMPARE(textOf(u"pageTitle"_s), u"Uninstall Ferrobank"_s);
        QTRY_VERIFY(!texts().contains(u"Ferrobank checks"_s));
        QVERIFY(!shows(u"state"_s));
    }

    void mirroredLanguagesPutTheControlsOnTheOtherSide()
    {
        QGuiApplication::setLayoutDirection(Qt::RightToLeft);
        openOn(Screen::onboarding(Screen::Consent));
        QVERIFY(item(u"close"_s).mapToScene(QPointF(0, 0)).x() < 40);
        QVERIFY(item(u"allow"_s).mapToScene(QPointF(0, 0)).x() < 40);
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    }
};

FERROBANK_TEST_WITH_WINDOWS(RootViewTest)
#include "RootViewTest.moc"
