#include "component/model/ModelTest.h"
#include "support/TestProgram.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ferrobank;

namespace {

const auto kPlaceholders = u"running pending, drive pending, login pending, space pending"_s;

} // namespace

/// The checks run.
class AppModelChecksTest : public ModelTest {
    Q_OBJECT

private Q_SLOTS:

    void aRunBeginsWithFourPendingRows()
    {
        start();
        seam().cli.holdLines();
        runChecks();
        QVERIFY(model().checksRunning());
        QVERIFY(!model().checksPassed());
        QCOMPARE(checks(), kPlaceholders);
        QStringList titles;
        for (const CheckItem& each : model().checks()) {
            titles.append(each.title);
            QVERIFY(!each.detail && !each.fix && !each.action);
        }
        QCOMPARE(titles, (QStringList{u"Ferrobank is running"_s, u"Drive is mounted and writable"_s,
                                      u"Starts at login"_s, u"Room on this Mac"_s}));
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 1);
    }

    void rowsFollowTheToolOneByOne()
    {
        start();
        seam().cli.holdLines();
        runChecks();
        QSignalSpy told(&model(), &AppModel::checksChanged);
        seam().cli.pushLine(line(u"drive"_s, State::Running));
        QCOMPARE(checks(), u"running pending, drive running, login pending, space pending"_s);
        seam().cli.pushLine(line(u"drive"_s, State::Pass));
        QCOMPARE(checks(), u"running pending, drive pass, login pending, space pending"_s);
        seam().cli.pushLine(line(u"running"_s, State::Fail));
        QCOMPARE(checks(), u"running fail, drive pass, login pending, space pending"_s);
        QCOMPARE(told.count(), 3);
    }

    void aRowReplacesTheWholeOlderOne()
    {
        start();
        seam().cli.holdLines();
        runChecks();
        CheckItem full = row(u"drive"_s, State::Fail, u"It is read-only."_s);
        full.fix = u"Restart it."_s;
        full.action = FixAction::Restart;
        seam().cli.pushLine(toJson(full));
        QCOMPARE(model().checks().at(1), full);
        seam().cli.pushLine(line(u"drive"_s, State::Pass));
        QCOMPARE(model().checks().at(1), row(u"drive"_s, State::Pass));
    }

    void unknownIdIsAppended()
    {
        start();
        seam().cli.streamLines({line(u"backup"_s, State::Pass)});
        runChecks();
        QCOMPARE(checks(), kPlaceholders + u", backup pass"_s);
    }

    void sameIdTwiceReplacesInPlace()
    {
        start();
        seam().cli.streamLines({line(u"backup"_s, State::Running), line(u"extra"_s, State::Pass),
                                line(u"backup"_s, State::Pass), line(u"login"_s, State::Pass)});
        runChecks();
        QCOMPARE(checks(),
                 u"running pending, drive pending, login pass, space pending, backup pass, extra pass"_s);
    }

    void anEqualRowAgainIsSilent()
    {
        start();
        seam().cli.holdLines();
        runChecks();
        seam().cli.pushLine(line(u"drive"_s, State::Running));
        QSignalSpy told(&model(), &AppModel::checksChanged);
        seam().cli.pushLine(line(u"drive"_s, State::Running));
        QCOMPARE(told.count(), 0);
    }

    void linesThatAreNoRowsAreSkipped()
    {
        start();
        seam().cli.streamLines({QString(), u"checking the drive"_s, u"{"_s, u"[]"_s, u"null"_s,
                                uR"({"id":"drive","title":"D","state":"awaiting_user"})"_s,
                                uR"({"id":"drive","title":"D","state":"Pass"})"_s,
                                uR"({"id":"drive","title":"D","state":"pass","action":"loginItems"})"_s,
                                uR"({"id":"drive","state":"pass"})"_s, line(u"space"_s, State::Pass)});
        runChecks();
        QCOMPARE(checks(), u"running pending, drive pending, login pending, space pass"_s);
        QVERIFY(!model().checksRunning());
    }

    void aSecondRunWhileOneIsInProgressDoesNothing()
    {
        start();
        seam().cli.holdLines();
        runChecks();
        seam().cli.pushLine(line(u"drive"_s, State::Pass));
        const QString before = checks();
        QSignalSpy told(&model(), &AppModel::checksChanged);
        const long holds = model().lifeline().holds();
        runChecks();
        QCOMPARE(model().lifeline().holds(), holds);
        QCOMPARE(checks(), before);
        QCOMPARE(told.count(), 0);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kCheck), 1);
    }

    void runIsOverOnlyAfterTheClosingRefresh()
    {
        start();
        seam().cli.holdLines();
        runChecks();
        const int polls = seam().cli.callsOf(FakeCLI::kStatus);
        seam().cli.hold(FakeCLI::kStatus);
        seam().cli.endLines();
        QCOMPARE(seam().cli.callsOf(FakeCLI::kStatus), polls + 1);
        QVERIFY(model().checksRunning());
        seam().cli.answerStatus(mountedStatus());
        QVERIFY(!model().checksRunning());
        QVERIFY(model().status()->mounted);
        QVERIFY(isIdle());
    }

    void toolThatCannotBeStartedIsAnErrorRow()
    {
        start();
        seam().cli.streamLines({}, u"No such file or directory"_s);
        runChecks();
        QCOMPARE(checks(), kPlaceholders + u", error fail"_s);
        const CheckItem& error = model().checks().constLast();
        QCOMPARE(error.title, u"Running the checks"_s);
        QCOMPARE(error.detail, u"No such file or directory"_s);
        QVERIFY(!error.fix && !error.action);
        QVERIFY(!model().checksPassed() && !model().checksRunning());
    }

    void toolThatFailsMidwayKeepsTheRowsSoFar()
    {
        start();
        seam().cli.holdLines();
        runChecks();
        seam().cli.pushLine(line(u"running"_s, State::Pass));
        seam().cli.endLines(u"the pipe broke"_s);
        QCOMPARE(checks(), u"running pass, drive pending, login pending, space pending, error fail"_s);
        QVERIFY(!model().checksRunning());
    }

    void theErrorRowIsAppendedEvenBesideARowOfThatId()
    {
        start();
        seam().cli.streamLines({line(u"error"_s, State::Pass)}, u"the pipe broke"_s);
        runChecks();
        QCOMPARE(checks(), kPlaceholders + u", error pass, error fail"_s);
    }

    void theNextRunReplacesAllRows()
    {
        start();
        seam().cli.streamLines({line(u"backup"_s, State::Fail)}, u"gone"_s);
        runChecks();
        seam().cli.holdLines();
        runChecks();
        QCOMPARE(checks(), kPlaceholders);
    }

    void allRowsPassedIsPassed()
    {
        start();
        QSignalSpy told(&model(), &AppModel::checksPassedChanged);
        seam().cli.streamLines({line(u"running"_s, State::Pass), line(u"drive"_s, State::Pass),
                                line(u"login"_s, State::Pass), line(u"space"_s, State::Pass)});
        runChecks();
        QVERIFY(model().checksPassed());
        QCOMPARE(told.count(), 1);
        runChecks();
        QVERIFY(model().checksPassed());
        QCOMPARE(told.count(), 3); // not while running, and again
    }

    void oneRowThatDidNotPassIsNotPassed_data()
    {
        QTest::addColumn<State>("state");
        QTest::newRow("skipped") << State::Skipped;
        QTest::newRow("failed") << State::Fail;
        QTest::newRow("awaiting the user") << State::AwaitingUser;
        QTest::newRow("still running") << State::Running;
        QTest::newRow("still pending") << State::Pending;
    }

    void oneRowThatDidNotPassIsNotPassed()
    {
        QFETCH(const State, state);
        start();
        seam().cli.streamLines({line(u"running"_s, State::Pass), line(u"drive"_s, State::Pass),
                                line(u"login"_s, State::Pass), line(u"space"_s, state)});
        runChecks();
        QVERIFY(!model().checksRunning());
        QVERIFY(!model().checksPassed());
    }

    void noRowsIsNotPassed()
    {
        create();
        QVERIFY(!model().checksPassed());
    }

    void whoDropsTheRunDoesNotStopIt()
    {
        start();
        seam().cli.holdLines();
        {
            const auto dropped = model().runChecks(); // a view that goes away
        }
        seam().cli.pushLine(line(u"drive"_s, State::Pass));
        seam().cli.endLines();
        QVERIFY(!model().checksRunning());
        QCOMPARE(model().checks().at(1).state, State::Pass);
    }

    void pollGoesOnBesideARun()
    {
        start();
        seam().cli.holdLines();
        runChecks();
        const int polls = seam().cli.callsOf(FakeCLI::kStatus);
        seam().cli.answerStatus(mountedStatus());
        advance(15s);
        QCOMPARE(seam().cli.callsOf(FakeCLI::kStatus), polls + 3);
        QVERIFY(model().status()->mounted);
        QVERIFY(model().checksRunning());
        QCOMPARE(checks(), kPlaceholders);
    }

    void hangingPollDoesNotHoldUpARun()
    {
        start();
        seam().cli.hold(FakeCLI::kStatus);
        advance(5s);
        seam().cli.streamLines({line(u"drive"_s, State::Pass)});
        runChecks();
        QCOMPARE(model().checks().at(1).state, State::Pass);
        seam().cli.answerStatus(mountedStatus());
        QVERIFY(!model().checksRunning());
    }

    void aHundredThousandRowsAreApplied()
    {
        start();
        QStringList lines;
        for (int i = 0; i < 100'000; ++i) {
            lines.append(uR"({"id":"%1","title":"Row","state":"pass"})"_s.arg(i));
            if (i % 10 == 0) {
                lines.append(u"junk"_s);
            }
        }
        seam().cli.streamLines(lines);
        int turns = 0;
        QTimer other;
        connect(&other, &QTimer::timeout, &other, [&turns] { ++turns; });
        other.start(0);
        runChecks();
        QVERIFY(model().checksRunning()); // it lets others have their turn
        QTRY_VERIFY_WITH_TIMEOUT(!model().checksRunning(), 240'000);
        QVERIFY2(turns > 50, qPrintable(QString::number(turns)));
        QCOMPARE(model().checks().size(), 100'004);
        QCOMPARE(model().checks().constLast().id, u"99999"_s);
        QVERIFY(isIdle());
    }

    void rowsKeepTheirDelegatesThroughARun()
    {
        start();
        seam().cli.streamLines({line(u"backup"_s, State::Pass)});
        runChecks();
        QSignalSpy inserted(model().checkRows(), &QAbstractItemModel::rowsInserted);
        QSignalSpy reset(model().checkRows(), &QAbstractItemModel::modelReset);
        seam().cli.streamLines({line(u"drive"_s, State::Pass)});
        runChecks();
        QCOMPARE(inserted.count(), 0);
        QCOMPARE(reset.count(), 0);
        QCOMPARE(model().checkRows()->rowCount(), 4);
    }
};

FERROBANK_TEST(AppModelChecksTest)
#include "AppModelChecksTest.moc"
