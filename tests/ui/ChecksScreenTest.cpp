#include "support/TestProgram.h"
#include "ui/WindowTest.h"

using namespace Qt::StringLiterals;
using namespace ferrobank;
using State = CheckItem::State;

/// The checks screen.
class ChecksScreenTest : public WindowTest {
    Q_OBJECT

private:
    void openWith(const QList<CheckItem>& rows)
    {
        start();
        model().setScreen(Screen::checks());
        model().checkRows()->replaceAll(rows);
        openWindow();
    }

    static CheckItem check(State state, std::optional<FixAction> action = {})
    {
        return {u"running"_s, u"Ferrobank is running"_s, state, {}, {}, action};
    }

private Q_SLOTS:

    void itSaysWhatItIs()
    {
        openWith({check(State::Pass)});
        QCOMPARE(textOf(u"pageTitle"_s), u"Ferrobank checks"_s);
        QCOMPARE(textOf(u"pageSubtitle"_s), u"The parts of your setup that keep the drive working."_s);
    }

    void arrivingWithoutResultsRunsTheChecks()
    {
        stage().seam.cli.holdLines();
        openOn(Screen::checks());
        QCOMPARE(stage().seam.cli.callsOf(FakeCLI::kCheck), 1);
        QVERIFY(model().checksRunning());
    }

    void arrivingWithResultsStartsNoRunAndShowsThem()
    {
        openWith({check(State::Fail)});
        QCOMPARE(stage().seam.cli.callsOf(FakeCLI::kCheck), 0);
        QCOMPARE(textOf(u"rowTitle"_s), u"Ferrobank is running"_s);
    }

    void duringARunThereIsOnlyASpinner()
    {
        stage().seam.cli.holdLines();
        openOn(Screen::checks());
        QVERIFY(shows(u"checksSpinner"_s));
        QVERIFY(!shows(u"runAgain"_s));
        QVERIFY(!shows(u"done"_s));
        press(Qt::Key_Return);
        QVERIFY(stage().mainWindow().isVisible());
        stage().seam.cli.endLines();
        QTRY_VERIFY(shows(u"done"_s));
        QVERIFY(shows(u"runAgain"_s));
        QVERIFY(!shows(u"checksSpinner"_s));
    }

    void runAgainRunsAgain()
    {
        openWith({check(State::Pass)});
        click(u"runAgain"_s);
        QCOMPARE(stage().seam.cli.callsOf(FakeCLI::kCheck), 1);
    }

    void returnIsDone()
    {
        openWith({check(State::Pass)});
        QCOMPARE(textOf(u"done"_s), u"Done"_s);
        press(Qt::Key_Return);
        QTRY_COMPARE(stage().host.closings, 1);
    }

    void rowsFollowTheRunOneByOne()
    {
        stage().seam.cli.holdLines();
        openOn(Screen::checks());
        const auto word = [this] { return item(u"stateIcon"_s).property("symbol").toString(); };
        QCOMPARE(word(), u"circle.dotted"_s);
        QQuickItem* first = find(u"stateIcon"_s);
        stage().seam.cli.pushLine(toJson(check(State::Pass)));
        QTRY_COMPARE(word(), u"checkmark.circle.fill"_s);
        QCOMPARE(find(u"stateIcon"_s), first);
    }

    void aFailedRunShowsItsErrorAsARow()
    {
        stage().seam.cli.streamLines({}, u"No such file or directory"_s);
        openOn(Screen::checks());
        QTRY_VERIFY(texts().contains(u"Running the checks"_s));
        QVERIFY(texts().contains(u"No such file or directory"_s));
        QVERIFY(shows(u"done"_s));
    }

    void aFixButtonCarriesOutItsRemedy()
    {
        openWith({check(State::Pass, FixAction::LoginItems)});
        QCOMPARE(textOf(u"rowFix"_s), u"Open Login Items"_s);
        click(u"rowFix"_s);
        QVERIFY(stage().seam.registry.calls.contains(u"open settings"_s));
    }

    void aFailureWithoutRemedyHasARedCrossAndNoButton()
    {
        openWith({check(State::Fail)});
        QCOMPARE(item(u"stateIcon"_s).property("symbol").toString(), u"xmark.circle.fill"_s);
        QVERIFY(!shows(u"rowFix"_s));
    }

    void aRestartShowsItsProgressInTheRow()
    {
        stage().seam.registry.agent.status = LoginServiceStatus::Enabled;
        openWith({check(State::Fail, FixAction::Restart)});
        click(u"rowFix"_s);
        QTRY_COMPARE(textOf(u"rowDetail"_s), u"Restarting Ferrobank…"_s);
    }

    void detailsCanBeCopied()
    {
        CheckItem row = check(State::Fail);
        row.detail = u"The store is locked."_s;
        openWith({row});
        QVERIFY(item(u"rowDetail"_s).property("selectByMouse").toBool());
        QVERIFY(item(u"rowDetail"_s).property("readOnly").toBool());
    }

    void aHundredThousandRowsStayLight()
    {
        QList<CheckItem> rows;
        for (int number = 0; number < 100'000; ++number) {
            rows << CheckItem{QString::number(number), u"Part"_s, State::Pass, {}, {}, {}};
        }
        openWith(rows);
        QVERIFY(window().findChildren<QQuickItem*>().size() < 5'000);
        QVERIFY(shows(u"done"_s));
    }
};

FERROBANK_TEST_WITH_WINDOWS(ChecksScreenTest)
#include "ChecksScreenTest.moc"
