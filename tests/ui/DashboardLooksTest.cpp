#include "Ferrobank/Components/Theme.h"
#include "support/TestProgram.h"
#include "ui/WindowTest.h"

#include <functional>

using namespace Qt::StringLiterals;
using namespace ferrobank;
using State = CheckItem::State;

/// Colours, sizes and insets of the dashboard, and where the keyboard shows.
class DashboardLooksTest : public WindowTest {
    Q_OBJECT

private:
    void openWith(const DriveStatus& status)
    {
        stage().seam.finishSetup();
        stage().seam.cli.answerStatus(status);
        start();
        openWindow();
    }

    static DriveStatus savingStatus()
    {
        DriveStatus status = mountedStatus();
        status.volume_used = 10'000'000'000U;
        status.store_bytes = 2'500'000'000U;
        status.saved = 7'500'000'000U;
        return status;
    }

    static void visit(QQuickItem* root, const std::function<void(QQuickItem*)>& seen)
    {
        if (root->isVisible()) {
            seen(root);
            for (QQuickItem* child : root->childItems()) {
                visit(child, seen);
            }
        }
    }

    /// The visible item below (or at) `root` whose property has the value.
    static QQuickItem* findWith(QQuickItem& root, const char* property, const QVariant& value)
    {
        QQuickItem* found = nullptr;
        visit(&root, [&](QQuickItem* each) {
            if (found == nullptr && each->property(property) == value) {
                found = each;
            }
        });
        return found;
    }

    QQuickItem& textItem(const QString& text)
    {
        QQuickItem* found = findWith(*window().contentItem(), "text", text);
        if (found == nullptr) {
            qFatal("No such words: %s", qPrintable(text));
        }
        return *found;
    }

    /// The ground on which the item lies: the nearest item around it with rounded corners.
    static QQuickItem& ground(QQuickItem& item)
    {
        QQuickItem* around = item.parentItem();
        while (around != nullptr && !around->property("radius").isValid()) {
            around = around->parentItem();
        }
        if (around == nullptr) {
            qFatal("It lies on no ground");
        }
        return *around;
    }

    static QRectF inScene(const QQuickItem& item)
    {
        return item.mapRectToScene(QRectF(0, 0, item.width(), item.height()));
    }

    static QColor colorOf(const QQuickItem& item) { return item.property("color").value<QColor>(); }

    static QFont fontOf(const QQuickItem& item) { return item.property("font").value<QFont>(); }

    Theme& theme() { return Theme::of(*stage().mainWindow().engine()); }

    QColor pillColor() { return colorOf(item(u"state"_s)); }

    static bool isGreen(const QColor& color) { return color.hsvHue() > 90 && color.hsvHue() < 170; }

    static bool isOrange(const QColor& color) { return color.hsvHue() > 15 && color.hsvHue() < 50; }

    static bool isRed(const QColor& color) { return color.hsvHue() < 15 || color.hsvHue() > 340; }

    /// Every ring that shows where the keyboard is.
    QList<QQuickItem*> rings()
    {
        QList<QQuickItem*> found;
        visit(window().contentItem(), [&found](QQuickItem* each) {
            if (QLatin1StringView(each->metaObject()->className()).startsWith("FocusRing"_L1)) {
                found.append(each);
            }
        });
        return found;
    }

private Q_SLOTS:

    void pillHasTheColourOfItsState_data()
    {
        QTest::addColumn<bool>("mounted");
        QTest::addColumn<bool>("installed");
        QTest::addColumn<bool>("error");
        QTest::addColumn<QString>("symbol");
        QTest::addColumn<QString>("color");
        QTest::newRow("Mounted") << true << true << false << u"checkmark.circle.fill"_s << u"green"_s;
        QTest::newRow("Needs attention")
            << false << true << true << u"exclamationmark.triangle.fill"_s << u"red"_s;
        QTest::newRow("Starting…") << false << true << false << u"clock.fill"_s << u"orange"_s;
        QTest::newRow("Not set up") << false << false << false << u"minus.circle.fill"_s << u"grey"_s;
    }

    void pillHasTheColourOfItsState()
    {
        QFETCH(const bool, mounted);
        QFETCH(const bool, installed);
        QFETCH(const bool, error);
        QFETCH(const QString, symbol);
        QFETCH(const QString, color);
        DriveStatus status = mounted ? mountedStatus() : unmountedStatus();
        status.installed = installed;
        if (error) {
            status.attach_error = u"no loop device"_s;
        }
        openWith(status);
        QQuickItem& pill = item(u"state"_s);
        QQuickItem* picture = findWith(pill, "name", symbol);
        QVERIFY2(picture, qPrintable(symbol));
        const QColor tint = colorOf(*picture);
        if (color == u"green") {
            QVERIFY(isGreen(tint));
        } else if (color == u"red") {
            QVERIFY(isRed(tint));
        } else if (color == u"orange") {
            QVERIFY(isOrange(tint));
        } else {
            QCOMPARE(tint, theme().secondary());
        }
        QColor faint = tint;
        faint.setAlphaF(0.15F);
        QCOMPARE(pillColor(), faint);
        QQuickItem* inside = pill.childItems().constFirst();
        QQuickItem* found = findWith(*inside, "text", QString::fromUtf8(QTest::currentDataTag()));
        QVERIFY(found);
        QQuickItem& word = *found;
        QCOMPARE(colorOf(word), tint);
        QCOMPARE(fontOf(word), theme().calloutMedium());
        QCOMPARE(fontOf(word).weight(), QFont::Medium);
    }

    void pillIsPaddedByTenAndThree()
    {
        openWith(mountedStatus());
        QQuickItem& pill = item(u"state"_s);
        QRectF words;
        for (QQuickItem* child : pill.childItems()) {
            words = words.united(inScene(*child));
        }
        const QRectF outside = inScene(pill);
        QCOMPARE(words.left() - outside.left(), 10.0);
        QCOMPARE(outside.right() - words.right(), 10.0);
        QCOMPARE(qRound(outside.height() - words.height()), 6);
        QCOMPARE(pill.property("radius").toReal(), pill.height() / 2);
    }

    void headerHasItsIconAndItsLinesApart()
    {
        openWith(mountedStatus());
        QQuickItem* icon = findWith(*window().contentItem(), "name", u"application"_s);
        QVERIFY(icon);
        QCOMPARE(icon->size(), QSizeF(52, 52));
        QQuickItem& title = textItem(u"Ferrobank"_s);
        QCOMPARE(fontOf(title), theme().titleBold());
        QCOMPARE(fontOf(title).weight(), QFont::Bold);
        QCOMPARE(inScene(item(u"state"_s)).top() - inScene(title).bottom(), 4.0);
        QQuickItem& place = item(u"mountpoint"_s);
        QCOMPARE(colorOf(place), theme().secondary());
        QCOMPARE(fontOf(place), theme().callout());
        QVERIFY(inScene(place).left() > inScene(item(u"state"_s)).right());
    }

    void attachErrorStandsInRedFourteenBelowTheHeader()
    {
        openWith(attachErrorStatus(u"no loop device"_s));
        QQuickItem& words = textItem(u"no loop device"_s);
        QVERIFY(isRed(colorOf(words)));
        const QQuickItem* icon = findWith(*window().contentItem(), "name", u"application"_s);
        QQuickItem& error = item(u"attachError"_s);
        QCOMPARE(inScene(error).top() - inScene(*icon->parentItem()).bottom(), 14.0);
    }

    void heroHasItsInsetsCornersAndFonts()
    {
        openWith(savingStatus());
        QQuickItem& heading = textItem(u"Space saved"_s);
        QQuickItem& panel = ground(heading);
        QCOMPARE(panel.property("radius").toReal(), 14.0);
        QCOMPARE(colorOf(panel), theme().panel());
        QCOMPARE(inScene(heading).topLeft() - inScene(panel).topLeft(), QPointF(20, 20));
        QCOMPARE(fontOf(heading), theme().headline());
        QCOMPARE(colorOf(heading), theme().secondary());
        QQuickItem& figure = item(u"saved"_s);
        QCOMPARE(fontOf(figure).pixelSize(), 52);
        QCOMPARE(fontOf(figure).weight(), QFont::DemiBold);
        QQuickItem& bar = item(u"savingsBar"_s);
        QCOMPARE(inScene(figure).top() - inScene(heading).bottom(), 10.0);
        QCOMPARE(inScene(bar).top() - inScene(figure).bottom(), 10.0);
        QQuickItem& sentence = item(u"savingSentence"_s);
        QCOMPARE(inScene(sentence).top() - inScene(bar).bottom(), 10.0);
        QCOMPARE(colorOf(sentence), theme().secondary());
        QCOMPARE(bar.width(), panel.width() - 40);
    }

    void quietHeroHasItsOwnSize()
    {
        DriveStatus status = mountedStatus();
        status.saved = 0;
        openWith(status);
        QQuickItem& words = item(u"nothingSaved"_s);
        QCOMPARE(fontOf(words).pixelSize(), 30);
        QCOMPARE(fontOf(words).weight(), QFont::DemiBold);
        QCOMPARE(colorOf(textItem(u"Clones and copies of the same files are stored once."_s)),
                 theme().secondary());
    }

    void savingsBarIsAGreenCapsuleOnAFaintOne()
    {
        openWith(savingStatus());
        QQuickItem& track = item(u"savingsBar"_s);
        QQuickItem& solid = item(u"solid"_s);
        QCOMPARE(track.height(), 10.0);
        QCOMPARE(solid.height(), 10.0);
        QCOMPARE(track.property("radius").toReal(), 5.0);
        QCOMPARE(solid.property("radius").toReal(), 5.0);
        QVERIFY(isGreen(colorOf(solid)));
        QCOMPARE(colorOf(solid).alphaF(), 1.0F);
        QColor faint = colorOf(solid);
        faint.setAlphaF(0.2F);
        QCOMPARE(colorOf(track), faint);
        QCOMPARE(inScene(solid).left(), inScene(track).left());
        QTRY_COMPARE(solid.width(), track.width() / 4);
    }

    void tilesStandTwelveApartWithSixteenInside()
    {
        openWith(savingStatus());
        const QStringList names{u"filesOnDrive"_s, u"storedOnDisk"_s, u"freeOnThisMac"_s, u"driveSize"_s};
        for (qsizetype number = 0; number < names.size(); ++number) {
            QQuickItem& tile = item(names.at(number));
            QCOMPARE(tile.property("radius").toReal(), 12.0);
            QCOMPARE(colorOf(tile), theme().panel());
            QQuickItem* label = findWith(tile, "text", tile.property("label"));
            QVERIFY(label);
            QQuickItem& value = item(u"value"_s, names.at(number));
            QCOMPARE(label->position(), QPointF(16, 16));
            QCOMPARE(label->width(), tile.width() - 32);
            QCOMPARE(fontOf(*label), theme().callout());
            QCOMPARE(colorOf(*label), theme().secondary());
            QCOMPARE(value.x(), 16.0);
            QCOMPARE(tile.height() - value.y() - value.height(), 16.0);
            QVERIFY(value.y() - label->y() - label->height() >= 4);
            QCOMPARE(fontOf(value).weight(), QFont::DemiBold);
            if (number > 0) {
                QQuickItem& before = item(names.at(number - 1));
                QCOMPARE(inScene(tile).left() - inScene(before).right(), 12.0);
                QCOMPARE(tile.size(), before.size());
            }
        }
    }

    void healthSymbolIsGreenOrOrangeInItsSlot_data()
    {
        QTest::addColumn<bool>("passes");
        QTest::newRow("passed") << true;
        QTest::newRow("failed") << false;
    }

    void healthSymbolIsGreenOrOrangeInItsSlot()
    {
        QFETCH(const bool, passes);
        QStringList lines;
        for (const QString& id : {u"running"_s, u"drive"_s, u"login"_s, u"space"_s}) {
            const State state = passes || id != u"drive" ? State::Pass : State::Fail;
            lines << toJson(CheckItem{id, id, state, {}, {}, {}});
        }
        stage().seam.cli.streamLines(lines);
        openWith(savingStatus());
        QTRY_VERIFY(shows(u"healthSymbol"_s));
        QQuickItem& symbol = item(u"healthSymbol"_s);
        QCOMPARE(symbol.property("name").toString(),
                 passes ? u"checkmark.circle.fill"_s : u"exclamationmark.triangle.fill"_s);
        QVERIFY(passes ? isGreen(colorOf(symbol)) : isOrange(colorOf(symbol)));
        QCOMPARE(symbol.parentItem()->width(), 24.0);
        if (!passes) {
            QCOMPARE(colorOf(item(u"healthNote"_s)), theme().secondary());
            QVERIFY(fontOf(item(u"healthNote"_s)).pointSizeF() < fontOf(item(u"healthText"_s)).pointSizeF());
        }
    }

    void settingsRowsHaveTheirInsets()
    {
        openWith(savingStatus());
        QQuickItem& panel = ground(item(u"menuAtLogin"_s));
        QCOMPARE(panel.property("radius").toReal(), 12.0);
        QCOMPARE(colorOf(panel), theme().panel());
        QQuickItem& toggle = item(u"menuAtLogin"_s);
        QCOMPARE(inScene(toggle).left() - inScene(panel).left(), 16.0);
        QCOMPARE(inScene(panel).right() - inScene(toggle).right(), 16.0);
        QQuickItem& log = item(u"showLog"_s);
        QQuickItem& uninstall = item(u"uninstall"_s);
        QCOMPARE(inScene(log).left() - inScene(panel).left(), 16.0);
        QCOMPARE(inScene(uninstall).left() - inScene(log).right(), 10.0);
        QVERIFY(inScene(panel).bottom() - inScene(log).bottom() >= 8);
        for (QQuickItem* control : {&toggle, &log}) {
            const QQuickItem* row = control->parentItem()->parentItem();
            QVERIFY2(row->height() >= 28 + 16, qPrintable(QString::number(row->height())));
        }
    }

    void fivePartsStandTwentyApart()
    {
        openWith(savingStatus());
        QQuickItem* column = ground(textItem(u"Space saved"_s)).parentItem();
        const QList<QQuickItem*> parts = column->childItems();
        QCOMPARE(parts.size(), 5);
        for (qsizetype number = 1; number < parts.size(); ++number) {
            QCOMPARE(parts.at(number)->y() - parts.at(number - 1)->y() - parts.at(number - 1)->height(),
                     20.0);
            QCOMPARE(parts.at(number)->x(), 0.0);
            QCOMPARE(parts.at(number)->width(), column->width());
        }
    }

    // Where the keyboard is

    void ringIsShownAroundTheControlThatTabHasReachedAndNoOther()
    {
        openWith(savingStatus());
        QCOMPARE(rings().size(), 0);
        for (int step = 0; step < 6; ++step) {
            press(Qt::Key_Tab);
            const QList<QQuickItem*> shown = rings();
            QCOMPARE(shown.size(), 1);
            const QQuickItem* focus = window().activeFocusItem();
            QVERIFY2(inScene(*focus).adjusted(-6, -6, 6, 6).contains(inScene(*shown.constFirst())),
                     qPrintable(focused()));
            QCOMPARE(shown.constFirst()->property("borderColor").value<QColor>(), theme().focusRing());
        }
    }

    void clickWithTheMouseShowsNoRing()
    {
        openWith(savingStatus());
        click(u"menuAtLogin"_s);
        click(u"showLog"_s);
        QCOMPARE(rings().size(), 0);
    }

    // A screen on its way

    void screenDuringItsFadeIsTheNewOneAloneAtItsOwnSize()
    {
        stage().seam.cli.answerStatus(mountedStatus());
        stage().seam.finishSetup();
        openOn(Screen::onboarding(Screen::Done));
        theme().setReducedMotion(true);
        model().setScreen(Screen::dashboard());
        QTRY_VERIFY(shows(u"state"_s));
        const int height = window().height();
        model().setScreen(Screen::onboarding(Screen::Done));
        QTRY_VERIFY(shows(u"openFerrobank"_s));
        theme().setReducedMotion(false);
        model().setScreen(Screen::dashboard());
        // At once, and long before the fade is over.
        QVERIFY(shows(u"state"_s));
        QVERIFY(!shows(u"openFerrobank"_s));
        const QQuickItem* faded = &item(u"state"_s);
        while (faded != nullptr && faded->opacity() >= 1) {
            faded = faded->parentItem();
        }
        QVERIFY(faded != nullptr);
        QTRY_COMPARE(window().height(), height);
        QTRY_COMPARE(faded->opacity(), 1.0);
    }
};

FERROBANK_TEST_WITH_WINDOWS(DashboardLooksTest)
#include "DashboardLooksTest.moc"
