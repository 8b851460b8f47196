#include "Ferrobank/Components/Palette.h"

#include "support/TestProgram.h"

#include <QtTest/QTest>

using namespace ferrobank;

/// The colours of the screens.
class PaletteTest : public QObject {
    Q_OBJECT

private:
    static QList<QColor> accents()
    {
        return {Palette::defaultAccent(), QColor(0x35, 0x84, 0xe4), QColor(0xe5, 0xa5, 0x0a),
                QColor(Qt::yellow),       QColor(Qt::white),        QColor(Qt::black),
                QColor(0x3d, 0xae, 0xe9), QColor(0x8f, 0xf0, 0xa4), QColor(0xd5, 0x61, 0x99)};
    }

    static QColor pillOf(QColor tint, const QColor& window)
    {
        tint.setAlphaF(0.15F);
        return composed(tint, window);
    }

private Q_SLOTS:

    void contrastIsThatOfTheStandard()
    {
        QCOMPARE(contrast(Qt::black, Qt::white), 21.0);
        QCOMPARE(contrast(Qt::white, Qt::white), 1.0);
        QVERIFY(qAbs(contrast(QColor(0x77, 0x77, 0x77), Qt::white) - 4.48) < 0.01);
    }

    void textIsReadableOnWindowPanelAndPill_data()
    {
        QTest::addColumn<bool>("dark");
        QTest::newRow("light") << false;
        QTest::newRow("dark") << true;
    }

    void textIsReadableOnWindowPanelAndPill()
    {
        QFETCH(bool, dark);
        for (const QColor& accent : accents()) {
            const Palette palette = dark ? Palette::dark(accent) : Palette::light(accent);
            const QColor panel = composed(palette.panel, palette.window);
            for (const Tint tint :
                 {Tint::Primary, Tint::Secondary, Tint::Accent, Tint::Green, Tint::Orange, Tint::Red})
            {
                const QColor text = palette.tint(tint);
                QVERIFY(contrast(text, palette.window) >= 4.5);
                QVERIFY(contrast(text, panel) >= 4.5);
            }
            for (const Tint tint : {Tint::Green, Tint::Orange, Tint::Red, Tint::Secondary}) {
                const QColor text = palette.tint(tint);
                QVERIFY2(contrast(text, pillOf(text, palette.window)) >= 4.5, qPrintable(text.name()));
            }
            QVERIFY(contrast(palette.onAccent, palette.accent) >= 4.5);
            QVERIFY(contrast(palette.onDanger, palette.danger) >= 4.5);
        }
    }

    void symbolsAndFocusRingStandOut()
    {
        for (const QColor& accent : accents()) {
            for (const Palette& palette : {Palette::light(accent), Palette::dark(accent)}) {
                QVERIFY(contrast(palette.tertiary, palette.window) >= 3.0);
                for (const Tint tint : {Tint::Green, Tint::Orange, Tint::Red}) {
                    QVERIFY(contrast(palette.symbolTint(tint), palette.window) >= 3.0);
                    QVERIFY(contrast(palette.symbolTint(tint), composed(palette.panel, palette.window)) >=
                            3.0);
                }
                QVERIFY(contrast(palette.focusRing, palette.window) >= 3.0);
            }
        }
    }

    void symbolsAreMoreVividThanTextOnLight()
    {
        const Palette palette = Palette::light(Palette::defaultAccent());
        for (const Tint tint : {Tint::Green, Tint::Orange, Tint::Red}) {
            QVERIFY(palette.symbolTint(tint).valueF() > palette.tint(tint).valueF());
        }
        QCOMPARE(palette.symbolTint(Tint::Secondary), palette.secondary);
    }

    void highContrastRaisesEverything()
    {
        for (const QColor& accent : accents()) {
            for (const Palette& palette :
                 {Palette::light(accent, Contrast::High), Palette::dark(accent, Contrast::High)})
            {
                const QColor panel = composed(palette.panel, palette.window);
                for (const Tint tint : {Tint::Primary, Tint::Secondary, Tint::Green, Tint::Orange, Tint::Red})
                {
                    QVERIFY2(contrast(palette.tint(tint), panel) >= 7,
                             qPrintable(palette.tint(tint).name() + u' ' + panel.name()));
                }
                QVERIFY(contrast(palette.border, palette.window) >= 7);
                QVERIFY(contrast(palette.onAccent, palette.accent) >= 7);
            }
        }
    }

    void whatTellsASwitchsStateStandsOut()
    {
        for (const QColor& accent : accents()) {
            for (const Palette& palette : {Palette::light(accent), Palette::dark(accent)}) {
                const QColor panel = composed(palette.panel, palette.window);
                QVERIFY(contrast(palette.track, panel) >= 3);
                QVERIFY(contrast(palette.track, Qt::white) >= 3);
                QVERIFY(contrast(palette.switchOn, panel) >= 3);
                QVERIFY(contrast(palette.onSwitch, palette.switchOn) >= 3);
                QVERIFY(contrast(palette.edge, palette.window) >= 1.5);
            }
        }
    }

    void aReadableColourStaysAsItIs()
    {
        const QColor green(0x10, 0x50, 0x20);
        QCOMPARE(readable(green, Qt::white, 4.5), green);
    }

    void anUnreadableColourMovesOnlyAsFarAsNeeded()
    {
        const QColor moved = readable(QColor(0x35, 0x84, 0xe4), Qt::white, 4.5);
        QVERIFY(contrast(moved, Qt::white) >= 4.5);
        QVERIFY(contrast(moved, Qt::white) < 4.8);
        QVERIFY(moved.blue() > moved.red());
    }

    void brightAccentsCarryDarkWords()
    {
        QVERIFY(Palette::light(Qt::yellow).onAccent.lightness() < 60);
        QCOMPARE(Palette::light(Palette::defaultAccent()).onAccent, QColor(Qt::white));
    }

    void composingIsWhatIsSeen()
    {
        QCOMPARE(composed(QColor(0, 0, 0, 255), Qt::white), QColor(Qt::black));
        QCOMPARE(composed(QColor(0, 0, 0, 0), Qt::white), QColor(Qt::white));
    }
};

FERROBANK_TEST(PaletteTest)
#include "PaletteTest.moc"
