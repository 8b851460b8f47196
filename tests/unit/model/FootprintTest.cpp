#include "Ferrobank/Model/Footprint.h"

#include "support/TestProgram.h"

#include <QtCore/QLocale>
#include <QtTest/QtTest>

using namespace Qt::StringLiterals;
using namespace ferrobank;

namespace {

const QLocale kEnglish(QLocale::English, QLocale::UnitedStates);

Footprint footprint(quint64 filesOnDrive, quint64 onDisk, quint64 saved)
{
    return {.filesOnDrive = filesOnDrive, .onDisk = onDisk, .saved = saved};
}

} // namespace

class FootprintTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void absentFiguresCountAsZero() { QCOMPARE(Footprint::of(DriveStatus()), footprint(0, 0, 0)); }

    void figuresAreTheTools()
    {
        DriveStatus status;
        status.volume_used = 10U;
        status.store_bytes = 4U;
        status.saved = 7U; // not the difference
        QCOMPARE(Footprint::of(status), footprint(10, 4, 7));
    }

    void aFreshDriveHasNothingSaved() { QVERIFY(footprint(8'000'000'000, 4'000'000'000, 0).nothingSaved()); }

    void savingsWithoutAStoreSizeAreNotShown()
    {
        QVERIFY(footprint(8'000'000'000, 0, 4'000'000'000).nothingSaved());
    }

    void savingsWithAStoreSizeAreShown() { QVERIFY(!footprint(0, 1, 1).nothingSaved()); }

    void fractionIsTheShareOnDisk() { QCOMPARE(footprint(10, 4, 6).fraction(), 0.4); }

    void fractionWithoutFilesIsFull() { QCOMPARE(footprint(0, 5, 1).fraction(), 1.0); }

    void fractionNeverExceedsOne() { QCOMPARE(footprint(4, 5, 1).fraction(), 1.0); }

    void aTinyShareStaysPositive()
    {
        const double fraction = footprint(1'000'000'000'000, 1, 1).fraction();
        QVERIFY(fraction > 0 && fraction < 1e-11);
    }

    void ratioKeepsItsTrailingZero()
    {
        QCOMPARE(footprint(10'000'000'000, 2'500'000'000, 1).ratio(kEnglish), u"4.0"_s);
    }

    void ratioIsNotClamped() { QCOMPARE(footprint(8, 10, 1).ratio(kEnglish), u"0.8"_s); }

    void ratioUsesTheLocalesSeparator()
    {
        QCOMPARE(footprint(42, 10, 1).ratio(QLocale(QLocale::German)), u"4,2"_s);
    }

    void sentenceNamesBothSizesAndTheRatio()
    {
        QCOMPARE(footprint(10'000'000'000, 2'500'000'000, 1).sentence(kEnglish),
                 u"10 GB of files take 2.5 GB on disk, 4.0× smaller."_s);
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(FootprintTest)
#include "FootprintTest.moc"
