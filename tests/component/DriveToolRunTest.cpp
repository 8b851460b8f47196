#include "Ferrobank/CLI/DriveStatus.h"
#include "Ferrobank/CLI/ProcessCLI.h"
#include "Platform/ChildProcess.h"
#include "support/Await.h"
#include "support/ProcessFacts.h"
#include "support/ScriptedTool.h"
#include "support/TestProgram.h"

#include <QtCore/QByteArrayList>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QScopeGuard>
#include <QtCore/QTimer>
#include <QtTest/QTest>

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

using namespace ferrobank;
using namespace ferrobank::test;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray kStatus = R"({"installed":true,"mounted":true,"mountpoint":"/m","log":"/l"})";

QString run(ProcessCLI& cli, const QStringList& args = {})
{
    return await(cli.run(args));
}

/// The words of the failure, or nothing when there was none.
QString failureOf(ProcessCLI& cli, const QStringList& args = {})
{
    try {
        static_cast<void>(run(cli, args));
    } catch (const CLI::Failure& failure) {
        return failure.message();
    }
    return {};
}

QString launchErrorOf(ProcessCLI& cli)
{
    try {
        static_cast<void>(run(cli));
    } catch (const LaunchError& error) {
        return QString::fromUtf8(error.what());
    }
    return {};
}

QJsonObject reportOf(ProcessCLI& cli)
{
    return QJsonDocument::fromJson(run(cli).toUtf8()).object();
}

std::unique_ptr<ChildProcess> launchPatiently(const ScriptedTool& tool, std::chrono::milliseconds patience,
                                              const std::shared_ptr<QByteArrayList>& pieces)
{
    ChildProcess::Setup setup;
    setup.program = tool.path();
    setup.output = [pieces](const QByteArray& piece) { pieces->append(piece); };
    setup.patience = patience;
    return ChildProcess::launch(std::move(setup));
}

/// Replaces one standard descriptor of this process, or closes it, until it goes out of scope.
class StandardDescriptor {
public:
    StandardDescriptor(int standard, int replacement)
        : _standard(standard), _saved(::fcntl(standard, F_DUPFD, 100))
    {
        if (replacement < 0) {
            ::close(standard);
        } else {
            ::dup2(replacement, standard);
        }
    }

    StandardDescriptor(const StandardDescriptor&) = delete;
    StandardDescriptor& operator=(const StandardDescriptor&) = delete;

    ~StandardDescriptor()
    {
        ::dup2(_saved, _standard);
        ::close(_saved);
    }

private:
    int _standard;
    int _saved;
};

} // namespace

class DriveToolRunTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void failureIsTheTrimmedErrorText()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"err": "  volume busy\n"}, {"exit": 3}])");
        ProcessCLI cli(tool.path());
        QCOMPARE(failureOf(cli), u"volume busy"_s);
    }

    void failureWithoutErrorTextNamesTheCommand()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out": "ignored"}, {"err": " \n\t"}, {"exit": 1}])");
        ProcessCLI cli(tool.path());
        QCOMPARE(failureOf(cli, {u"uninstall"_s, u"--delete-store"_s}),
                 u"ferrobank uninstall --delete-store failed"_s);
    }

    void failureKeepsLineBreaksInsideTheErrorText()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"err": "\nfirst\n  second %1\n"}, {"exit": 255}])");
        ProcessCLI cli(tool.path());
        QCOMPARE(failureOf(cli), u"first\n  second %1"_s);
    }

    void runIsEmptyWhenToolPrintsOnlyErrors()
    {
        const ScriptedTool tool;
        tool.prints(kStatus, u"err"_s);
        ProcessCLI cli(tool.path());
        QCOMPARE(run(cli), QString());
        QVERIFY(!await(cli.json<DriveStatus>({})));
    }

    void runKeepsTheTrailingLineBreak()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out": "\n one\r\n"}, {"pause": 5}, {"out": "two\n"}])");
        ProcessCLI cli(tool.path());
        QCOMPARE(run(cli), u"\n one\r\ntwo\n"_s);
    }

    void invalidUtf8IsReplacedAndTornCharactersStayWhole()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out_hex": "efbbbf61ff62c3"}, {"pause": 20}, {"out_hex": "a4e2"}])");
        ProcessCLI cli(tool.path());
        QCOMPARE(run(cli), u"\uFEFFa\uFFFDbä\uFFFD"_s);
    }

    void jsonDecodesTheOutput()
    {
        const ScriptedTool tool;
        tool.prints(kStatus + '\n');
        ProcessCLI cli(tool.path());
        const auto status = await(cli.json<DriveStatus>({u"status"_s, u"--json"_s}));
        QVERIFY(status);
        QCOMPARE(status->mountpoint, u"/m"_s);
        QCOMPARE(tool.runs(), (QList<QStringList>{{u"status"_s, u"--json"_s}}));
    }

    void jsonIsEmptyWhenToolExitsNonZero()
    {
        const ScriptedTool tool;
        tool.prints(kStatus, u"out"_s, 1);
        ProcessCLI cli(tool.path());
        QVERIFY(!await(cli.json<DriveStatus>({})));
    }

    void jsonIsEmptyWhenOutputDoesNotDecode()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out": "busy\n"}])");
        ProcessCLI cli(tool.path());
        QVERIFY(!await(cli.json<DriveStatus>({})));
    }

    void missingToolFailsAtOnceWithTheSystemsWords()
    {
        ProcessCLI cli(u"/nonexistent/ferrobank"_s);
        QCOMPARE(launchErrorOf(cli), u"“ferrobank” does not exist."_s);
        QVERIFY(!await(cli.json<DriveStatus>({})));
    }

    void directoryInPlaceOfTheToolFails()
    {
        ProcessCLI cli(QDir::tempPath());
        QCOMPARE(launchErrorOf(cli), u"Permission denied"_s);
    }

    void toolThatIsNotExecutableFails()
    {
        const ScriptedTool tool;
        QVERIFY(QFile::setPermissions(tool.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner));
        ProcessCLI cli(tool.path());
        QCOMPARE(launchErrorOf(cli), u"Permission denied"_s);
    }

    void toolThatIsNoProgramFails()
    {
        const ScriptedTool tool;
        QFile file(tool.path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("not a program");
        file.close();
        ProcessCLI cli(tool.path());
        QCOMPARE(launchErrorOf(cli), u"Exec format error"_s);
    }

    void deathBySignalIsAFailure()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out": "{}"}, {"signal": 9}])");
        ProcessCLI cli(tool.path());
        QCOMPARE(failureOf(cli, {u"restart"_s}), u"ferrobank restart failed"_s);
        tool.plays(R"([{"err": "out of memory"}, {"signal": 6}])");
        QCOMPARE(failureOf(cli), u"out of memory"_s);
    }

    void childProcessTellsTheSignal()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"signal": 9}])");
        ChildProcess::Setup setup;
        setup.program = tool.path();
        const auto process = ChildProcess::launch(std::move(setup));
        QCOMPARE(await(process->finished()), 128 + SIGKILL);
        await(process->outputEnded());
    }

    void argumentsArriveAsTheyAre()
    {
        const ScriptedTool tool;
        ProcessCLI cli(tool.path());
        const QStringList args{u"a b"_s, QString(),        u"\"quoted\" 'too'"_s, u"$HOME `id` \\"_s,
                               u"*"_s,   u"line\nbreak"_s, u"--export=ü✓"_s};
        static_cast<void>(run(cli, args));
        QCOMPARE(tool.runs(), QList<QStringList>{args});
    }

    void environmentFolderAndInputAreInherited()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"report": true}])");
        const QString folder = QDir::currentPath();
        QVERIFY(QDir::setCurrent(QFileInfo(tool.path()).path()));
        qputenv("FERROBANK_TEST", "in herited");
        QFile input(tool.file(u"input"_s));
        QVERIFY(input.open(QIODevice::ReadWrite));
        input.write("typed");
        input.seek(0);

        QJsonObject report;
        {
            const StandardDescriptor standardInput(STDIN_FILENO, input.handle());
            ProcessCLI cli(tool.path());
            report = reportOf(cli);
        }
        qunsetenv("FERROBANK_TEST");
        QVERIFY(QDir::setCurrent(folder));
        QCOMPARE(report[u"variable"].toString(), u"in herited"_s);
        QCOMPARE(report[u"folder"].toString(), QFileInfo(tool.path()).canonicalPath());
        QCOMPARE(report[u"input"].toString(), u"typed"_s);
    }

    void keptEnvironmentIsInheritedWhateverChangesSince()
    {
        const QByteArray raw("first \xff value");
        qputenv("FERROBANK_TEST", raw);
        ChildProcess::keepEnvironment();
        qputenv("FERROBANK_TEST", "second");
        const auto back = qScopeGuard([] {
            qunsetenv("FERROBANK_TEST");
            ChildProcess::keepEnvironment();
        });
        const auto inherited = [] {
            const auto output = std::make_shared<QByteArray>();
            const auto process = ChildProcess::launch(
                u"/usr/bin/env"_s, {}, ChildProcess::StandardError::Discard,
                [output](const QByteArray& piece) { *output += piece; }, nullptr);
            await(process->finished());
            return *output;
        };
        QVERIFY(inherited().contains("FERROBANK_TEST=" + raw + '\n'));
        qunsetenv("FERROBANK_TEST");
        QVERIFY(inherited().contains("FERROBANK_TEST=" + raw + '\n'));
    }

    void nothingElseIsInherited()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"report": true}])");
        const int leaky = ::open("/dev/null", O_RDONLY); // without O_CLOEXEC
        sigset_t blocked;
        sigset_t before;
        ::sigemptyset(&blocked);
        ::sigaddset(&blocked, SIGTERM);
        ::sigprocmask(SIG_BLOCK, &blocked, &before);
        const auto broken = ::signal(SIGPIPE, SIG_IGN);

        ProcessCLI cli(tool.path());
        const QJsonObject report = reportOf(cli);

        ::signal(SIGPIPE, broken);
        ::sigprocmask(SIG_SETMASK, &before, nullptr);
        ::close(leaky);
        QCOMPARE(report[u"open"].toArray(), (QJsonArray{0, 1, 2}));
        QVERIFY(report[u"terminates"].toBool());
        QVERIFY(report[u"broken_pipe_ends"].toBool());
    }

    void worksWithClosedStandardDescriptors()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out": "out"}, {"err": "err"}, {"exit": 1}])");
        ProcessCLI cli(tool.path());
        QString message;
        {
            const StandardDescriptor input(STDIN_FILENO, -1);
            const StandardDescriptor output(STDOUT_FILENO, -1);
            const StandardDescriptor errorText(STDERR_FILENO, -1);
            message = failureOf(cli);
        }
        QCOMPARE(message, u"err"_s);
    }

    void floodOnEitherPipeIsReadWhole_data()
    {
        QTest::addColumn<QByteArray>("steps");
        QTest::addColumn<bool>("fails");
        QTest::newRow("standard output")
            << QByteArray(R"([{"flood": {"bytes": 67108864, "text": "ab"}}])") << false;
        QTest::newRow("standard error")
            << QByteArray(R"([{"flood": {"stream": "err", "bytes": 67108864, "text": "ab"}}, {"exit": 1}])")
            << true;
    }

    void floodOnEitherPipeIsReadWhole()
    {
        QFETCH(QByteArray, steps);
        QFETCH(bool, fails);
        constexpr qsizetype kFlood = 64 * 1024 * 1024;
        const ScriptedTool tool;
        tool.plays(steps);
        ProcessCLI cli(tool.path());
        const QString text = fails ? failureOf(cli) : run(cli);
        QCOMPARE(text.size(), kFlood);
        QVERIFY(text.endsWith(u"abab"_s));
    }

    void outputOfAShortRunIsReadAtItsEndInOneGo()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out": "one"}, {"pause": 20}, {"out": "two"}])");
        const auto pieces = std::make_shared<QByteArrayList>();
        const auto process = launchPatiently(tool, 1h, pieces);
        QCOMPARE(await(process->finished()), 0);
        QCOMPARE(*pieces, (QByteArrayList{"onetwo", QByteArray()}));
    }

    void outputOfALongRunIsReadWhileItRuns()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out": "one"}, {"wait_for": )" + tool.quoted(u"go"_s) + R"(}, {"out": "two"}])");
        const auto pieces = std::make_shared<QByteArrayList>();
        const auto process = launchPatiently(tool, 1ms, pieces);
        QTRY_COMPARE(*pieces, QByteArrayList{"one"});
        QVERIFY(QFile(tool.file(u"go"_s)).open(QIODevice::WriteOnly));
        QCOMPARE(await(process->finished()), 0);
        QCOMPARE(*pieces, (QByteArrayList{"one", "two", QByteArray()}));
    }

    void shortRunThatFillsThePipeIsNotLeftWaiting()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"flood": {"bytes": 1048576, "text": "ab"}}])");
        const auto pieces = std::make_shared<QByteArrayList>();
        const auto process = launchPatiently(tool, 50ms, pieces);
        QCOMPARE(await(process->finished()), 0);
        QCOMPARE(pieces->join().size(), 1048576);
    }

    void hangingToolHoldsNothingElseUp()
    {
        const ScriptedTool hanging;
        hanging.plays(R"([{"hang": true}])");
        ProcessCLI stuck(hanging.path());
        const auto ended = std::make_shared<Settled<QString>>();
        const auto waiting = settle(stuck.run({}), ended);
        QTRY_COMPARE(hanging.processes().size(), 1);

        const ScriptedTool tool;
        tool.plays(R"([{"out": "fine"}])");
        ProcessCLI cli(tool.path());
        QCOMPARE(run(cli), u"fine"_s);
        QVERIFY(!ended->done);
        QCOMPARE(::kill(static_cast<pid_t>(hanging.processes().first()), SIGKILL), 0);
        QTRY_VERIFY(ended->done);
        QVERIFY(ended->error);
    }

    void callerIsSuspendedWhileTheEventLoopTurns()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"wait_for": )" + tool.quoted(u"go"_s) + "}]");
        ProcessCLI cli(tool.path());
        QTimer::singleShot(30, this, [&tool] { QFile(tool.file(u"go"_s)).open(QIODevice::WriteOnly); });
        QCOMPARE(run(cli), QString());
    }

    void severalRunsAreInFlightAtATime()
    {
        const ScriptedTool tool;
        const QByteArray file = tool.quoted(u"second"_s);
        tool.scenario(R"({"runs": [{"args": ["first"], "play": [{"wait_for": )" + file +
                      R"(}, {"out": "1"}]}, {"args": ["second"], "play": [{"touch": )" + file +
                      R"(}, {"out": "2"}]}]})");
        ProcessCLI cli(tool.path());
        const QStringList firstArgs{u"first"_s};
        auto first = cli.run(firstArgs);
        QCOMPARE(run(cli, {u"second"_s}), u"2"_s);
        QCOMPARE(await(std::move(first)), u"1"_s);
    }

    void toolThatIsReplacedWhileRunningEndsAsItself()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out": "old"}, {"wait_for": )" + tool.quoted(u"go"_s) + R"(}, {"out": " tool"}])");
        ProcessCLI cli(tool.path());
        auto old = cli.run({});
        QTRY_COMPARE(tool.runs().size(), 1);

        const ScriptedTool other;
        QCOMPARE(
            ::rename(QFile::encodeName(other.path()).constData(), QFile::encodeName(tool.path()).constData()),
            0);
        tool.plays(R"([{"out": "new tool"}])");
        QCOMPARE(run(cli), u"new tool"_s);
        QVERIFY(QFile(tool.file(u"go"_s)).open(QIODevice::WriteOnly));
        QCOMPARE(await(std::move(old)), u"old tool"_s);
    }

    void grandchildThatKeepsThePipesOpenDoesNotHoldTheCaller()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"grandchild": [{"hang": true}]}, {"out": "done"}])");
        ProcessCLI cli(tool.path());
        QCOMPARE(run(cli), u"done"_s);
        const ProcessFacts facts;
        const auto lingering = facts.processesRunning(tool.path());
        QCOMPARE(lingering.size(), 1);
        ::kill(lingering.first(), SIGKILL);
    }

    void whatAGrandchildWritesSoonStillCounts()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"grandchild": [{"pause": 10}, {"out": " late"}]}, {"out": "early"}])");
        ProcessCLI cli(tool.path());
        QCOMPARE(run(cli), u"early late"_s);
    }

    void neitherZombiesNorDescriptorsAreLeft()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out": "x"}, {"err": "y"}])");
        ProcessCLI cli(tool.path());
        static_cast<void>(run(cli));
        const ProcessFacts before;
        constexpr int kRuns = 100;
        for (int i = 0; i < kRuns; ++i) {
            static_cast<void>(run(cli));
        }
        const ProcessFacts after;
        QCOMPARE(after.openDescriptors, before.openDescriptors);
        QCOMPARE(after.children(), 0);
    }
};

FERROBANK_TEST(DriveToolRunTest)
#include "DriveToolRunTest.moc"
