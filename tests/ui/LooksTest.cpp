#include "Ferrobank/Components/Palette.h"
#include "Ferrobank/Components/Theme.h"
#include "support/TestProgram.h"
#include "ui/WindowTest.h"

#include <QtTest/QSignalSpy>

#include <algorithm>
#include <map>

using namespace Qt::StringLiterals;
using namespace ferrobank;
using State = CheckItem::State;

namespace {

constexpr double kShape = 3;
constexpr double kText = 4.5;

/// The accents of GNOME, KDE and elementary, and the extremes.
const QList<QColor> kAccents{Palette::defaultAccent(), QColor(0x35, 0x84, 0xe4), QColor(0x3a, 0x94, 0x4a),
                             QColor(0xf9, 0xc4, 0x40), QColor(0xed, 0x5b, 0x00), QColor(0xe6, 0x2d, 0x42),
                             QColor(0xc8, 0x1e, 0x5a), QColor(0x91, 0x41, 0xac), QColor(Qt::white),
                             QColor(Qt::black)};

QList<CheckItem> inEveryState()
{
    QList<CheckItem> rows;
    for (const State state : {State::Pending, State::AwaitingUser, State::Pass, State::Fail, State::Skipped})
    {
        CheckItem row{QString::number(rows.size()), u"Part"_s, state, u"Details"_s, {}, {}};
        row.action = rows.size() % 2 == 0 ? FixAction::Restart : FixAction::PrivacySettings;
        rows << row;
    }
    return rows;
}

} // namespace

/// How the screens look: what can be told apart, what has which size, and what keeps its place.
class LooksTest : public WindowTest {
    Q_OBJECT

private:
    Theme& theme() { return Theme::of(*stage().mainWindow().engine()); }

    QImage pictureOf(const QQuickItem& target)
    {
        const QRectF place = target.mapRectToScene(QRectF(0, 0, target.width(), target.height()));
        return _picture.copy(place.toAlignedRect());
    }

    static QColor groundOf(const QImage& picture)
    {
        std::map<QRgb, int> counts;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                ++counts[picture.pixel(x, y)];
            }
        }
        return std::ranges::max_element(counts, {}, [](const auto& each) { return each.second; })->first;
    }

    /// The contrast with the ground that this many pixels reach.
    static double drawnContrast(const QImage& picture, const QColor& ground, int pixels)
    {
        QList<double> reached;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                reached << contrast(picture.pixelColor(x, y), ground);
            }
        }
        std::ranges::sort(reached, std::greater());
        return reached.value(pixels - 1);
    }

    QColor colourAt(const QQuickItem& target, QPointF where)
    {
        return _picture.pixelColor(target.mapToScene(where).toPoint());
    }

    void openWith(const QList<CheckItem>& rows)
    {
        start();
        model().setScreen(Screen::checks());
        model().checkRows()->replaceAll(rows);
        openWindow();
    }

    void look()
    {
        QSignalSpy frames(&window(), &QQuickWindow::frameSwapped);
        window().update();
        QVERIFY(frames.wait());
        _picture = window().grabWindow();
    }

    QList<QQuickItem*> all(const QString& name)
    {
        QList<QQuickItem*> found;
        QList<QQuickItem*> waiting{window().contentItem()};
        while (!waiting.isEmpty()) {
            QQuickItem* each = waiting.takeFirst();
            if (each->objectName() == name && each->isVisible()) {
                found << each;
            }
            waiting << each->childItems();
        }
        return found;
    }

    /// Called for each accent in light, dark and high contrast.
    void forEachLook(const std::function<void(const QString&)>& check)
    {
        theme().setReducedMotion(true); // colours, not their change
        for (const QColor& accent : kAccents) {
            for (const bool dark : {false, true}) {
                for (const bool high : {false, true}) {
                    theme().setAccent(accent);
                    theme().setDark(dark);
                    theme().setHighContrast(high);
                    look();
                    check(u"%1 %2 %3"_s.arg(accent.name(), dark ? u"dark"_s : u"light"_s,
                                            high ? u"high"_s : u"usual"_s));
                    if (QTest::currentTestFailed()) {
                        return;
                    }
                }
            }
        }
    }

    QImage _picture;

private Q_SLOTS:

    void switchesAreSeenOnAndOff()
    {
        openOn(Screen::uninstall());
        forEachLook([this](const QString& look) {
            for (const QString& name : {u"copiesFiles"_s, u"deletesData"_s}) {
                auto* track = item(name).property("indicator").value<QQuickItem*>();
                const QColor ground = colourAt(*track, QPointF(-6, track->height() / 2));
                const bool on = item(name).property("checked").toBool();
                const qreal knob = on ? track->width() - 11 : 11;
                const qreal rest = track->width() - knob;
                const QColor fill = colourAt(*track, QPointF(rest, track->height() / 2));
                const QColor knobColour = colourAt(*track, QPointF(knob, track->height() / 2));
                QVERIFY2(contrast(fill, ground) >= kShape,
                         qPrintable(u"%1 %2: %3"_s.arg(look, name).arg(contrast(fill, ground))));
                QVERIFY2(contrast(knobColour, fill) >= kShape,
                         qPrintable(u"%1 %2: %3"_s.arg(look, name).arg(contrast(knobColour, fill))));
            }
        });
    }

    void symbolsOfEveryStateAreSeen()
    {
        openWith(inEveryState());
        forEachLook([this](const QString& look) {
            const QList<QQuickItem*> icons = all(u"stateIcon"_s);
            QCOMPARE(icons.size(), 5);
            for (const QQuickItem* icon : icons) {
                const QColor ground = colourAt(*icon, QPointF(-4, icon->height() / 2));
                const double drawn = drawnContrast(pictureOf(*icon), ground, 8);
                QVERIFY2(drawn >= kShape, qPrintable(u"%1: %2"_s.arg(look).arg(drawn)));
            }
        });
    }

    void wordsAreReadable()
    {
        CheckItem failed{u"one"_s, u"HTILFE part"_s, State::Fail, u"HTILFE detail"_s, {}, {}};
        openWith({failed});
        forEachLook([this](const QString& look) {
            for (const QString& name :
                 {u"pageTitle"_s, u"rowTitle"_s, u"rowDetail"_s, u"done"_s, u"runAgain"_s})
            {
                const QImage picture = pictureOf(item(name));
                const double drawn = drawnContrast(picture, groundOf(picture), 3);
                QVERIFY2(drawn >= kText, qPrintable(u"%1 %2: %3"_s.arg(look, name).arg(drawn)));
            }
        });
    }

    void theSavingsBarIsSeen()
    {
        stage().seam.finishSetup();
        stage().seam.cli.answerStatus(mountedStatus());
        openOn(Screen::dashboard());
        forEachLook([this](const QString& look) {
            const QQuickItem& bar = item(u"savingsBar"_s);
            const QColor solid = colourAt(bar, QPointF(5, 5));
            const QColor panel = colourAt(bar, QPointF(5, -5));
            QVERIFY2(contrast(solid, panel) >= kShape, qPrintable(look));
        });
    }

    void aWarningHasASignBesideItsColour()
    {
        openOn(Screen::uninstall());
        QVERIFY(!shows(u"warningSign"_s));
        click(u"deletesData"_s);
        QVERIFY(!shows(u"warningSign"_s));
        click(u"copiesFiles"_s);
        QVERIFY(shows(u"warningSign"_s));
    }

    void fixButtonsOfAListAreAsWideAsEachOther()
    {
        openWith(inEveryState());
        const QList<QQuickItem*> buttons = all(u"rowFix"_s);
        QCOMPARE(buttons.size(), 5);
        qreal widest = 0;
        for (const QQuickItem* button : buttons) {
            widest = std::max(widest, button->implicitWidth());
        }
        for (const QQuickItem* button : buttons) {
            QCOMPARE(button->width(), widest);
        }
    }

    void returnPressesTheButtonThatHasTheFocus()
    {
        stage().seam.registry.agent.status = LoginServiceStatus::Enabled;
        openWith({{u"one"_s, u"Part"_s, State::Fail, {}, {}, FixAction::LoginItems}});
        item(u"rowFix"_s).forceActiveFocus(Qt::TabFocusReason);
        press(Qt::Key_Return);
        QVERIFY(stage().seam.registry.calls.contains(u"open settings"_s));
        QCOMPARE(stage().host.closings, 0);
        QVERIFY(stage().mainWindow().isVisible());
    }

    void theListHasARingOnlyWhereItHasTheFocusItself()
    {
        openWith(inEveryState());
        theme().setDisplayHeight(330);
        QQuickItem& list = item(u"checks"_s);
        QTRY_VERIFY(list.property("scrolls").toBool());
        list.forceActiveFocus(Qt::TabFocusReason);
        QVERIFY(shows(u"listRing"_s));
        const QRectF ring =
            item(u"listRing"_s).mapRectToItem(&list, QRectF(0, 0, item(u"listRing"_s).width(), 1));
        QVERIFY(ring.top() < 0);
        QVERIFY(!item(u"listRing"_s).parentItem()->clip());
        item(u"rowFix"_s).forceActiveFocus(Qt::TabFocusReason);
        QVERIFY(!shows(u"listRing"_s));
    }

    void aListThatGoesOnFadesAtItsEdge()
    {
        openWith(inEveryState());
        QVERIFY(!shows(u"fadeBelow"_s));
        theme().setDisplayHeight(330);
        QTRY_VERIFY(shows(u"fadeBelow"_s));
        QVERIFY(!shows(u"fadeAbove"_s));
        item(u"checks"_s).forceActiveFocus(Qt::TabFocusReason);
        for (int step = 0; step < 10; ++step) {
            press(Qt::Key_PageDown);
        }
        QTRY_VERIFY(shows(u"fadeAbove"_s));
        QVERIFY(!shows(u"fadeBelow"_s));
    }

    void theDashboardHasItsHeightBeforeItsFigures()
    {
        stage().seam.finishSetup();
        stage().seam.cli.hold(FakeCLI::kStatus);
        openOn(Screen::dashboard());
        QVERIFY(shows(u"statusSpinner"_s));
        const int before = window().height();
        QVERIFY(before > 500);
        stage().seam.cli.finish(FakeCLI::kStatus, FakeCLI::Answer::text(toJson(mountedStatus())));
        QTRY_VERIFY(shows(u"saved"_s));
        look();
        QCOMPARE(window().height(), before);
    }

    void theFirstSavingPushesNothingAway()
    {
        stage().seam.finishSetup();
        DriveStatus fresh = mountedStatus();
        fresh.saved = 0;
        stage().seam.cli.answerStatus(fresh);
        openOn(Screen::dashboard());
        QVERIFY(shows(u"nothingSaved"_s));
        look();
        const int before = window().height();
        stage().seam.cli.answerStatus(mountedStatus());
        stage().seam.clock.advance(std::chrono::seconds(5));
        QTRY_VERIFY(shows(u"saved"_s));
        look();
        QCOMPARE(window().height(), before);
    }

    void theUninstallKeepsTheHeightOfItsForm()
    {
        openOn(Screen::uninstall());
        look();
        const int form = window().height();
        stage().seam.cli.hold({u"uninstall"_s, u"--export"_s, u"/home/anna/Ferrobank Files"_s});
        click(u"uninstall"_s);
        QTRY_COMPARE(textOf(u"pageTitle"_s), u"Uninstalling Ferrobank"_s);
        look();
        QCOMPARE(window().height(), form);
    }

    void aPageAndItsSizeChangeTogether()
    {
        openWith(inEveryState());
        theme().setReducedMotion(false);
        model().setScreen(Screen::uninstall());
        // In the same turn: nothing of the old page is left, and the window has the new page's height.
        QVERIFY(!texts().contains(u"Ferrobank checks"_s));
        QVERIFY(texts().contains(u"Uninstall Ferrobank"_s));
        look();
        const QQuickItem& buttons = item(u"pageButtons"_s);
        QCOMPARE(window().height(), qCeil(buttons.mapToScene(QPointF(0, buttons.height())).y()) + 32);
    }

    void whatStandsBesideTextGrowsWithIt()
    {
        openWith(inEveryState());
        const qreal icon = item(u"stateIcon"_s).height();
        const QFont usual = QGuiApplication::font();
        QFont large = usual;
        large.setPointSizeF(usual.pointSizeF() * 1.5);
        QGuiApplication::setFont(large);
        const qreal grown = item(u"stateIcon"_s).height();
        const int hero = theme().hero().pixelSize();
        QGuiApplication::setFont(usual);
        QVERIFY(grown > icon * 1.3);
        QVERIFY(hero > 52 * 1.3);
    }

    void aWindowIsNeverLargerThanItsDisplay()
    {
        stage().seam.finishSetup();
        stage().seam.cli.answerStatus(mountedStatus());
        openOn(Screen::dashboard());
        theme().setDisplayHeight(420);
        theme().setDisplayWidth(600);
        look();
        QCOMPARE(window().size(), QSize(600, 420));
        // What does not fit is reached by the keyboard, and nothing sticks out to the side.
        item(u"uninstall"_s).forceActiveFocus(Qt::TabFocusReason);
        const QQuickItem& button = item(u"uninstall"_s);
        const QRectF place = button.mapRectToScene(QRectF(0, 0, button.width(), button.height()));
        QVERIFY(place.top() >= 0 && place.bottom() <= 420);
        const QQuickItem& run = item(u"runChecks"_s);
        QVERIFY(run.mapRectToScene(QRectF(0, 0, run.width(), 1)).right() <= 600 - 32);
    }

    void theHeroHasARoundFaceWhereThereIsOne()
    {
        QCOMPARE(Theme::roundFace({u"DejaVu Sans"_s}), QString());
        QCOMPARE(Theme::roundFace({u"DejaVu Sans"_s, u"Nunito"_s, u"Quicksand"_s}), u"Nunito"_s);
    }
};

FERROBANK_TEST_WITH_WINDOWS(LooksTest)
#include "LooksTest.moc"
