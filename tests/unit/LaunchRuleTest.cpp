#include "Ferrobank/FerrobankApp/LaunchRule.h"

#include "support/TestProgram.h"

#include <QtTest/QTest>

namespace ferrobank {

using Uninstall = AppModel::UninstallState;

class LaunchRuleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void openingLeadsToWhatIsUsefulNow_data()
    {
        QTest::addColumn<bool>("setupComplete");
        QTest::addColumn<Screen>("present");
        QTest::addColumn<int>("uninstall");
        QTest::addColumn<Screen>("expected");
        const int idle = static_cast<int>(Uninstall::Kind::Idle);
        const int running = static_cast<int>(Uninstall::Kind::Running);
        const int done = static_cast<int>(Uninstall::Kind::Done);
        const Screen welcome = Screen::onboarding(Screen::Welcome);

        QTest::newRow("dashboard stays") << true << Screen::dashboard() << idle << Screen::dashboard();
        QTest::newRow("closed checks lead to the dashboard")
            << true << Screen::checks() << idle << Screen::dashboard();
        QTest::newRow("closed uninstall form leads to the dashboard")
            << true << Screen::uninstall() << idle << Screen::dashboard();
        QTest::newRow("running uninstall stays")
            << true << Screen::uninstall() << running << Screen::uninstall();
        QTest::newRow("finished uninstall stays")
            << false << Screen::uninstall() << done << Screen::uninstall();
        QTest::newRow("unfinished setup keeps its step")
            << false << Screen::onboarding(Screen::Setup) << idle << Screen::onboarding(Screen::Setup);
        QTest::newRow("last page of a finished setup stays")
            << true << Screen::onboarding(Screen::Done) << idle << Screen::onboarding(Screen::Done);
        QTest::newRow("setup finished elsewhere leads to the dashboard")
            << true << welcome << idle << Screen::dashboard();
        QTest::newRow("setup undone elsewhere begins anew")
            << false << Screen::dashboard() << idle << welcome;
        QTest::newRow("checks of an undone setup lead to the setup")
            << false << Screen::checks() << idle << welcome;
    }

    void openingLeadsToWhatIsUsefulNow()
    {
        QFETCH(bool, setupComplete);
        QFETCH(Screen, present);
        QFETCH(int, uninstall);
        QFETCH(Screen, expected);
        const Uninstall state{static_cast<Uninstall::Kind>(uninstall), {}};
        QVERIFY(screenForOpening(setupComplete, present, state) == expected);
    }
};

} // namespace ferrobank

FERROBANK_TEST_WITHOUT_APPLICATION(ferrobank::LaunchRuleTest)
#include "LaunchRuleTest.moc"
