#include "Ferrobank/Views/OnboardingPresenter.h"
#include "support/TestProgram.h"

#include <QtTest/QTest>

using namespace ferrobank;
using Outcome = SetupButtons::Outcome;

/// Which buttons the setup page offers.
class SetupButtonsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void theFirstRuleThatHoldsDecides_data()
    {
        QTest::addColumn<int>("outcome");
        QTest::addColumn<bool>("needsApproval");
        QTest::addColumn<bool>("mountFailed");
        QTest::addColumn<QString>("buttons");
        const auto row = [](const char* name, Outcome outcome, bool needsApproval, bool mountFailed,
                            const char* buttons) {
            QTest::newRow(name) << int(outcome) << needsApproval << mountFailed
                                << QString::fromLatin1(buttons);
        };
        row("working", Outcome::Working, false, false, "");
        row("working, approval missing", Outcome::Working, true, true, "");
        row("failed", Outcome::SomethingFailed, false, false, "again");
        row("failed, approval missing", Outcome::SomethingFailed, true, false, "login again");
        row("mount failed", Outcome::SomethingFailed, false, true, "privacy again");
        row("both", Outcome::SomethingFailed, true, true, "login privacy again");
        row("done", Outcome::Done, false, false, "continue");
        row("done, approval missing", Outcome::Done, true, true, "continue");
    }

    void theFirstRuleThatHoldsDecides()
    {
        QFETCH(int, outcome);
        QFETCH(bool, needsApproval);
        QFETCH(bool, mountFailed);
        const auto buttons = SetupButtons::of(Outcome(outcome), needsApproval, mountFailed);
        QStringList names;
        const auto add = [&names](bool offered, const char* name) {
            if (offered) {
                names << QString::fromLatin1(name);
            }
        };
        add(buttons.proceed, "continue");
        add(buttons.openLoginItems, "login");
        add(buttons.openPrivacySettings, "privacy");
        add(buttons.tryAgain, "again");
        QTEST(names.join(u' '), "buttons");
    }
};

FERROBANK_TEST(SetupButtonsTest)
#include "SetupButtonsTest.moc"
