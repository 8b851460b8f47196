#include "Ferrobank/CLI/ProcessCLI.h"
#include "component/model/ModelTest.h"
#include "support/ProcessFacts.h"
#include "support/ScriptedTool.h"
#include "support/TestProgram.h"

#include <QtCore/QFile>

#include <nlohmann/json.hpp>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ferrobank;
using ferrobank::test::ProcessFacts;
using ferrobank::test::ScriptedTool;

namespace {

constexpr int kLimit = 60'000;

using Json = nlohmann::json;

/// One step of a scenario.
Json step(const char* verb, const Json& value)
{
    return Json::object({{verb, value}});
}

Json step(const char* verb, const QString& text)
{
    return step(verb, Json(text.toStdString()));
}

/// A rule of a scenario: these arguments, these steps.
Json rule(const Json& args, const Json& steps)
{
    return Json::object({{"args", args}, {"play", steps}});
}

const Json kStatusArgs = Json::array({"status", "--json"});
const Json kCheckArgs = Json::array({"check", "--json"});

Json statusRule(const DriveStatus& status)
{
    return rule(kStatusArgs, Json::array({step("out", toJson(status))}));
}

} // namespace

/// The model over real runs of a real program; everything else is in memory, and the test moves the time.
class AppModelRealToolTest : public ModelTest {
    Q_OBJECT

private Q_SLOTS:

    void aDayOfPollsLeavesNoChildAndNoDescriptorBehind()
    {
        ScriptedTool tool;
        play(tool, Json::array({statusRule(mountedStatus())}));
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
        const QString passed = line(u"running"_s, State::Pass);
        const Json steps = Json::array({
            step("out", u"starting\n"_s + passed.first(30)),
            step("pause", 20),
            step("out", passed.sliced(30) + u"\r\n\n"_s),
            step("out_hex", u"fffe0a"_s),
            step("out", line(u"x"_s, State::Fail).replace(u"fail"_s, u"odd"_s) + u'\n'),
            step("err", u"ignored\n"_s),
            step("out", line(u"x"_s, State::Fail)),
            step("exit", 3),
        });
        play(tool, Json::array({rule(kCheckArgs, steps), statusRule(mountedStatus())}));
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
        QCOMPARE(model().checks().constLast().detail, u"“ferrobank” does not exist."_s);
        QVERIFY(!model().status());
        endIdle();
    }

    void aToolThatDisappearsMidRunKeepsTheRowsSoFar()
    {
        ScriptedTool tool;
        const Json steps = Json::array({
            step("out", line(u"running"_s, State::Pass) + u'\n'),
            step("touch", tool.file(u"begun"_s)),
            step("wait_for", tool.file(u"go on"_s)),
            step("signal", 9),
        });
        play(tool, Json::array({rule(kCheckArgs, steps), statusRule(mountedStatus())}));
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
        play(tool, Json::array({statusRule(unmountedStatus())}));
        ProcessCLI cli(tool.path());
        startOver(cli);
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), kLimit);
        QFile next(tool.file(u"next"_s));
        QVERIFY(QFile::copy(tool.path(), next.fileName()));
        QVERIFY(QFile::remove(tool.path()));
        QVERIFY(next.rename(tool.path()));
        play(tool, Json::array({statusRule(mountedStatus())}));
        advance(5s);
        QTRY_VERIFY_WITH_TIMEOUT(model().status()->mounted, kLimit);
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), kLimit);
        endIdle();
    }

    void uninstallPassesAPathWithSpacesAndQuotesAsOneArgument()
    {
        ScriptedTool tool;
        const Json steps = Json::array({step("err", u"  volume busy\n"_s), step("exit", 3)});
        play(tool, Json::array({rule(Json::array({"uninstall", "*"}), steps)}));
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
        const Json unmounted = Json::array({step("out", toJson(unmountedStatus()))});
        const Json mounted = Json::array({step("out", toJson(mountedStatus()))});
        const Json answers = Json::array({unmounted, unmounted, unmounted, mounted});
        play(tool, Json::array({Json::object({{"args", kStatusArgs}, {"answers", answers}})}));
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
    static void play(const ScriptedTool& tool, const Json& rules)
    {
        tool.scenario(QByteArray::fromStdString(Json::object({{"runs", rules}}).dump()));
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

FERROBANK_TEST(AppModelRealToolTest)
#include "AppModelRealToolTest.moc"
