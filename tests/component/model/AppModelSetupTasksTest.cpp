#include "component/model/ModelTest.h"
#include "support/TestProgram.h"

#include <QtCore/QFileInfo>

using namespace Qt::StringLiterals;
using namespace ferrobank;

namespace {

const auto kHint = u"Choose Install Command-Line Tool… from the Ferrobank menu any time."_s;

} // namespace

/// The setup rows, when they are done, and the step that installs the command.
class AppModelSetupTasksTest : public ModelTest {
    Q_OBJECT

private Q_SLOTS:

    void freshRowsFollowTheChoices()
    {
        create();
        const QList<CheckItem> rows = model().freshSetupTasks();
        QCOMPARE(summary(rows), u"login pending, mount pending, finder pending, cli pending"_s);
        QStringList titles;
        for (const CheckItem& each : rows) {
            titles.append(each.title);
            QVERIFY(!each.detail && !each.fix && !each.action);
        }
        QCOMPARE(titles,
                 (QStringList{u"Start your drive at login"_s, u"Create and mount your drive at ~/Ferrobank"_s,
                              u"Add the drive to Finder"_s, u"Install the ferrobank command"_s}));
        declineCommand();
        QCOMPARE(summary(model().freshSetupTasks()), u"login pending, mount pending, finder pending"_s);
    }

    void noRowsAreNotDone()
    {
        create();
        QVERIFY(!model().setupDone());
        QVERIFY(!model().mountFailed());
    }

    void rowsDecideWhetherSetupIsDone_data()
    {
        QTest::addColumn<State>("mount");
        QTest::addColumn<State>("cli");
        QTest::addColumn<bool>("done");
        QTest::addColumn<bool>("mountFailed");
        QTest::newRow("all passed") << State::Pass << State::Pass << true << false;
        QTest::newRow("one skipped") << State::Skipped << State::Pass << true << false;
        QTest::newRow("command skipped") << State::Pass << State::Skipped << true << false;
        QTest::newRow("command failed") << State::Pass << State::Fail << true << false;
        QTest::newRow("command running") << State::Pass << State::Running << false << false;
        QTest::newRow("command awaits the user") << State::Pass << State::AwaitingUser << false << false;
        QTest::newRow("command pending") << State::Pass << State::Pending << false << false;
        QTest::newRow("mount failed") << State::Fail << State::Pass << false << true;
        QTest::newRow("mount running") << State::Running << State::Pass << false << false;
        QTest::newRow("mount awaits the user") << State::AwaitingUser << State::Pass << false << false;
        QTest::newRow("mount pending") << State::Pending << State::Pass << false << false;
    }

    void rowsDecideWhetherSetupIsDone()
    {
        QFETCH(const State, mount);
        QFETCH(const State, cli);
        create();
        model().setupTaskRows()->replaceAll({row(u"login"_s, State::Pass), row(u"mount"_s, mount),
                                             row(u"finder"_s, State::Pass), row(u"cli"_s, cli)});
        QTEST(model().setupDone(), "done");
        QTEST(model().mountFailed(), "mountFailed");
    }

    void threeRowsAreDoneWithoutTheCommand()
    {
        create();
        model().setupTaskRows()->replaceAll(
            {row(u"login"_s, State::Pass), row(u"mount"_s, State::Skipped), row(u"finder"_s, State::Pass)});
        QVERIFY(model().setupDone());
    }

    void onlyTheMountRowCountsForAFailedMount()
    {
        create();
        model().setupTaskRows()->replaceAll(
            {row(u"login"_s, State::Fail), row(u"mount"_s, State::Running), row(u"cli"_s, State::Fail)});
        QVERIFY(!model().mountFailed());
        QVERIFY(!model().setupDone());
    }

    void installedCommandPassesAndIsAlink()
    {
        startWithRows();
        install();
        const CheckItem cli = setupTask(u"cli"_s);
        QCOMPARE(cli.state, State::Pass);
        QCOMPARE(cli.detail, u"Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank."_s);
        QVERIFY(!cli.fix);
        QVERIFY(seam().commandLineTool.isInstalled());
        QVERIFY(seam().privilegedLink.requests.isEmpty());
    }

    void commandIsRunningWhileThePromptIsOpen()
    {
        startWithRows();
        seam().removeLinkFolder();
        seam().privilegedLink.answered.shut();
        install();
        QCOMPARE(setupTask(u"cli"_s), running());
        seam().privilegedLink.answered.open();
        QCOMPARE(setupTask(u"cli"_s).state, State::Pass);
        QVERIFY(isIdle());
    }

    void cancelledPromptIsSkippedNotFailed()
    {
        startWithRows();
        seam().removeLinkFolder();
        seam().privilegedLink.outcome.kind = PrivilegedOutcome::Kind::Cancelled;
        install();
        const CheckItem cli = setupTask(u"cli"_s);
        QCOMPARE(cli.state, State::Skipped);
        QCOMPARE(cli.detail, u"Skipped. "_s + kHint);
        QVERIFY(!cli.fix);
    }

    void failedPromptShowsItsWords()
    {
        startWithRows();
        seam().removeLinkFolder();
        seam().privilegedLink.outcome.kind = PrivilegedOutcome::Kind::Failed;
        seam().privilegedLink.outcome.message = u"No authentication agent found."_s;
        install();
        const CheckItem cli = setupTask(u"cli"_s);
        QCOMPARE(cli.state, State::Fail);
        QCOMPARE(cli.detail, u"No authentication agent found."_s);
        QCOMPARE(cli.fix, kHint);
    }

    void fileInThePlaceOfTheCommandIsLeftAlone()
    {
        startWithRows();
        QFile file(seam().commandLineTool.link());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        install();
        const CheckItem cli = setupTask(u"cli"_s);
        QCOMPARE(cli.state, State::Fail);
        QCOMPARE(cli.detail, seam().commandLineTool.link() +
                                 u" already exists and is not a link, so Ferrobank left it alone."_s);
        QCOMPARE(cli.fix, kHint);
        QVERIFY(!QFileInfo(file.fileName()).isSymLink() && QFileInfo::exists(file.fileName()));
        QVERIFY(seam().privilegedLink.requests.isEmpty());
    }

    void installWithoutARowShowsNothing()
    {
        start();
        QSignalSpy told(&model(), &AppModel::setupTasksChanged);
        install();
        QVERIFY(model().setupTasks().isEmpty());
        QCOMPARE(told.count(), 0);
        QVERIFY(seam().commandLineTool.isInstalled());
    }

    void pollGoesOnWhileThePromptIsOpen()
    {
        startWithRows();
        seam().removeLinkFolder();
        seam().privilegedLink.answered.shut();
        install();
        seam().cli.answerStatus(mountedStatus());
        advance(std::chrono::minutes(10));
        QVERIFY(model().status()->mounted);
        QCOMPARE(setupTask(u"cli"_s), running());
    }

private:
    void declineCommand()
    {
        SetupChoices choices = model().choices();
        choices.installCLI = false;
        model().setChoices(choices);
    }

    void startWithRows()
    {
        start();
        model().setupTaskRows()->replaceAll(model().freshSetupTasks());
    }

    void install() { spawn(&model(), model().installCommandLineTool()); }

    static CheckItem running()
    {
        CheckItem expected;
        expected.id = u"cli"_s;
        expected.title = u"Install the ferrobank command"_s;
        expected.state = State::Running;
        return expected;
    }
};

FERROBANK_TEST(AppModelSetupTasksTest)
#include "AppModelSetupTasksTest.moc"
