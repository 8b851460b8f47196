#include "Ferrobank/Model/HealthSummary.h"

#include "support/TestProgram.h"

#include <QtTest/QtTest>

using namespace Qt::StringLiterals;
using namespace ferrobank;

namespace {

CheckItem row(CheckItem::State state, const QString& title = {}, std::optional<QString> detail = {})
{
    return {.id = title, .title = title, .state = state, .detail = detail, .fix = {}, .action = {}};
}

constexpr auto kPass = CheckItem::State::Pass;
constexpr auto kFail = CheckItem::State::Fail;

} // namespace

class HealthSummaryTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void noRowsReadAsRunning()
    {
        const HealthSummary summary = HealthSummary::of({}, false);
        QVERIFY(summary.kind == HealthSummary::Kind::Running);
        QCOMPARE(summary.text, u"Running checks…"_s);
        QVERIFY(summary.note.isEmpty());
    }

    void aRunInProgressHidesTheResults()
    {
        const HealthSummary summary = HealthSummary::of({row(kFail, u"Drive"_s)}, true);
        QVERIFY(summary.kind == HealthSummary::Kind::Running);
        QCOMPARE(summary.text, u"Running checks…"_s);
        QVERIFY(summary.note.isEmpty());
    }

    void allRowsPassedIsPassed()
    {
        const HealthSummary summary = HealthSummary::of({row(kPass), row(kPass)}, false);
        QVERIFY(summary.kind == HealthSummary::Kind::Passed);
        QCOMPARE(summary.text, u"2 of 2 checks passed"_s);
        QVERIFY(summary.note.isEmpty());
    }

    void aSkippedRowIsNotPassedAndHasNoNote()
    {
        const HealthSummary summary = HealthSummary::of({row(kPass), row(CheckItem::State::Skipped)}, false);
        QVERIFY(summary.kind == HealthSummary::Kind::Failing);
        QCOMPARE(summary.text, u"1 of 2 checks passed"_s);
        QVERIFY(summary.note.isEmpty());
    }

    void noteIsTheDetailOfTheFirstFailedRow()
    {
        const QList<CheckItem> rows{row(kPass), row(kFail, u"Drive"_s, u"It is not mounted."_s),
                                    row(kFail, u"Login"_s, u"Off."_s)};
        QCOMPARE(HealthSummary::of(rows, false).note, u"It is not mounted."_s);
    }

    void noteIsTheTitleWhenThereIsNoDetail()
    {
        QCOMPARE(HealthSummary::of({row(kPass), row(kFail, u"Drive"_s)}, false).note, u"Drive"_s);
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(HealthSummaryTest)
#include "HealthSummaryTest.moc"
