#include "Ferrobank/CLI/ProcessCLI.h"
#include "component/model/ModelTest.h"
#include "support/ProcessFacts.h"
#include "support/ScriptedTool.h"

#include <QtCore/QFile>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ferrobank;
using ferrobank::test::ProcessFacts;
using ferrobank::test::ScriptedTool;

namespace {

constexpr int kLimit = 60'000;

QByteArray quotedText(const QString& text)
{
    QByteArray json = text.toUtf8();
    json.replace('\\', R"(\\)").replace('"', R"(\")").replace('\n', R"(\n)");
    return '"' + json + '"';
}

/// A rule of a scenario: these arguments, these steps.
QByteArray rule(const QByteArray& args, const QByteArray& steps)
{
    return R"({"args": )" + args + R"(, "play": )" + steps + '}';
}

QByteArray statusRule(const DriveStatus& status)
{
    return rule(R"(["status", "--json"])", R"([{"out": )" + quotedText(toJson(status) + u'\n') + "}]");
}

} // namespace

/// The model over real runs of a real program; everything else is in memory, and the test moves the time.
class AppModelRealToolTest : public ModelTest {
    Q_OBJECT

private Q_SLOTS:

    void aDayOfPollsLeavesNoChildAndNoDescriptorBehind()
    {
        ScriptedTool tool;
        play(tool, {statusRule(mountedStatus())});
        ProcessCLI cli(tool.path());
        startOver(cli);
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), kLimit);
        const ProcessFacts before;
        for (int poll = 0; poll < 100; ++poll) {
            QSignalSpy told(&model(), &AppModel::statusChanged);
            advance(5s);
            QTRY_COMPARE_WITH_TIMEOUT(told.count(), 1, kLimit);
        }
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), kLimit);
        const ProcessFacts after;
        QCOMPARE(after.openDescriptors, before.openDescriptors);
        QCOMPARE(after.children(), 0);
        destroyModel();
    }

    void checksStreamFromTheToolWithJunkBetweenTheRows()
    {
        ScriptedTool tool;
        const QByteArray steps =
            R"([{"out": "starting\n{\"id\":\"running\",\"title\":\"R\",\"sta"}, {"pause": 20},
            {"out": "te\":\"pass\"}\r\n\n"}, {"out_hex": "fffe0a"},
            {"out": "{\"id\":\"x\",\"title\":\"X\",\"state\":\"odd\"}\n"}, {"err": "ignored\n"},
            {"out": "{\"id\":\"x\",\"title\":\"X\",\"state\":\"fail\"}"}, {"exit": 3}])";
        play(tool, {rule(R"(["check", "--json"])", steps), statusRule(mountedStatus())});
        ProcessCLI cli(tool.path());
        startOver(cli);
        runChecks();
        QTRY_VERIFY_WITH_TIMEOUT(!model().checksRunning(), kLimit);
        QCOMPARE(checks(), u"running pass, drive pending, login pending, space pending, x fail"_s);
        QVERIFY(model().status().has_value());
        endIdle();
    }

    void aToolThatIsMissingIsAnErrorRowWithTheSystemsWords()
    {
        ScriptedTool tool;
        ProcessCLI cli(tool.path());
        QVERIFY(QFile::remove(tool.path()));
        startOver(cli);
        runChecks();
        QTRY_VERIFY_WITH_TIMEOUT(!model().checksRunning(), kLimit);
        QCOMPARE(model().checks().constLast().id, u"error"_s);
        QCOMPARE(model().checks().constLast().detail, u"No such file or directory"_s);
        QVERIFY(!model().status());
        endIdle();
    }

    void aToolThatDisappearsMidRunKeepsTheRowsSoFar()
    {
        ScriptedTool tool;
        const QByteArray steps = R"([{"out": "{\"id\":\"running\",\"title\":\"R\",\"state\":\"pass\"}\n"},
                                     {"touch": )" +
                                 tool.quoted(u"begun"_s) + R"(}, {"wait_for": )" + tool.quoted(u"go on"_s) +
                                 R"(}, {"signal": 9}])";
        play(tool, {rule(R"(["check", "--json"])", steps), statusRule(mountedStatus())});
        ProcessCLI cli(tool.path());
        startOver(cli);
        QTRY_VERIFY_WITH_TIMEOUT(model().status().has_value(), kLimit);
        runChecks();
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(tool.file(u"begun"_s)), kLimit);
        QVERIFY(QFile::remove(tool.path()));
        QFile goOn(tool.file(u"go on"_s));
        QVERIFY(goOn.open(QIODevice::WriteOnly));
        QTRY_VERIFY_WITH_TIMEOUT(!model().checksRunning(), kLimit);
        QCOMPARE(model().checks().constFirst().state, State::Pass);
        QVERIFY(model().status()->mounted); // the closing refresh found no tool: the old status stays
        endIdle();
    }

    void aToolThatIsReplacedMidRunIsAskedAnewAtTheNextPoll()
    {
        ScriptedTool tool;
        play(tool, {statusRule(unmountedStatus())});
        ProcessCLI cli(tool.path());
        startOver(cli);
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), kLimit);
        QFile next(tool.file(u"next"_s));
        QVERIFY(QFile::copy(tool.path(), next.fileName()));
        QVERIFY(QFile::remove(tool.path()));
        QVERIFY(next.rename(tool.path()));
        play(tool, {statusRule(mountedStatus())});
        advance(5s);
        QTRY_VERIFY_WITH_TIMEOUT(model().status()->mounted, kLimit);
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), kLimit);
        endIdle();
    }

    void uninstallPassesAPathWithSpacesAndQuotesAsOneArgument()
    {
        ScriptedTool tool;
        play(tool, {rule(R"(["uninstall", "*"])", R"([{"err": "  volume busy\n"}, {"exit": 3}])")});
        ProcessCLI cli(tool.path());
        startOver(cli);
        const auto folder = u"/mnt/Ann's \"big\" disk\\%s $HOME ä"_s;
        spawn(&model(), model().uninstall(folder, true));
        QTRY_COMPARE_WITH_TIMEOUT(model().uninstallState().kind, AppModel::UninstallState::Kind::Failed,
                                  kLimit);
        QCOMPARE(model().uninstallState().text, u"volume busy"_s);
        QVERIFY(
            tool.runs().contains(QStringList{u"uninstall"_s, u"--export"_s, folder, u"--delete-store"_s}));
        endIdle();
    }

    void aSetupRunUsesTheRealTool()
    {
        ScriptedTool tool;
        const QByteArray unmounted = R"([{"out": )" + quotedText(toJson(unmountedStatus())) + "}]";
        const QByteArray mounted = R"([{"out": )" + quotedText(toJson(mountedStatus())) + "}]";
        play(tool, {R"({"args": ["status", "--json"], "answers": [)" + unmounted + ", " + unmounted + ", " +
                    unmounted + ", " + mounted + "]}"});
        ProcessCLI cli(tool.path());
        startOver(cli);
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), kLimit);
        runSetup();
        for (int second = 0; second < 2; ++second) {
            QCOMPARE(setupTask(u"mount"_s).state, State::Running);
            const long holds = model().lifeline().holds();
            advance(1s);
            QTRY_VERIFY_WITH_TIMEOUT(model().setupDone() || model().lifeline().holds() == holds, kLimit);
        }
        QTRY_VERIFY_WITH_TIMEOUT(model().setupDone(), kLimit);
        endIdle();
    }

private:
    static void play(const ScriptedTool& tool, const QByteArrayList& rules)
    {
        tool.scenario(R"({"runs": [)" + rules.join(", ") + "]}");
    }

    void startOver(CLI& cli)
    {
        create(cli);
        letEventsIn();
    }

    /// The model has to go before the tool's runner does, and nothing may be at work then.
    void endIdle()
    {
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), kLimit);
        QCOMPARE(ProcessFacts().children(), 0);
        destroyModel();
    }
};

QTEST_GUILESS_MAIN(AppModelRealToolTest)
#include "AppModelRealToolTest.moc"
