#include "Ferrobank/Model/DriveState.h"

#include "support/TestProgram.h"

#include <QtTest/QtTest>

using namespace Qt::StringLiterals;
using namespace ferrobank;

class DriveStateTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void firstRuleThatHoldsWins_data()
    {
        QTest::addColumn<bool>("mounted");
        QTest::addColumn<bool>("error");
        QTest::addColumn<bool>("installed");
        QTest::addColumn<QString>("word");
        QTest::addColumn<QString>("symbol");
        QTest::addColumn<DriveState::Colour>("colour");

        const auto mounted = u"Mounted"_s;
        const auto check = u"checkmark.circle.fill"_s;
        QTest::newRow("mounted") << true << false << true << mounted << check << DriveState::Green;
        QTest::newRow("mounted despite an error")
            << true << true << true << mounted << check << DriveState::Green;
        QTest::newRow("mounted, not installed")
            << true << false << false << mounted << check << DriveState::Green;
        const auto attention = u"Needs attention"_s;
        const auto triangle = u"exclamationmark.triangle.fill"_s;
        QTest::newRow("error") << false << true << true << attention << triangle << DriveState::Red;
        QTest::newRow("error, not installed")
            << false << true << false << attention << triangle << DriveState::Red;
        QTest::newRow("starting") << false << false << true << u"Starting…"_s << u"clock.fill"_s
                                  << DriveState::Orange;
        QTest::newRow("not set up") << false << false << false << u"Not set up"_s << u"minus.circle.fill"_s
                                    << DriveState::Secondary;
    }

    void firstRuleThatHoldsWins()
    {
        QFETCH(const bool, mounted);
        QFETCH(const bool, error);
        QFETCH(const bool, installed);
        DriveStatus status;
        status.mounted = mounted;
        status.installed = installed;
        if (error) {
            status.attach_error = u"volume busy"_s;
        }
        const DriveState state(status);
        QTEST(state.word(), "word");
        QTEST(state.symbol(), "symbol");
        QTEST(state.colour(), "colour");
    }

    void anEmptyErrorTextIsAnErrorToo()
    {
        DriveStatus status;
        status.attach_error = QString();
        QCOMPARE(DriveState(status).kind(), DriveState::NeedsAttention);
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(DriveStateTest)
#include "DriveStateTest.moc"
