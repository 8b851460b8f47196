#include "Ferrobank/CLI/LineSplitter.h"
#include "Ferrobank/CLI/ProcessCLI.h"
#include "Platform/ChildProcess.h"
#include "support/Await.h"
#include "support/ProcessFacts.h"
#include "support/ScriptedTool.h"
#include "support/TestProgram.h"

#include <QtCore/QFile>
#include <QtCore/QScopeGuard>
#include <QtCore/QTimer>
#include <QtTest/QTest>

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

using namespace ferrobank;
using namespace ferrobank::test;
using namespace Qt::StringLiterals;

namespace {

/// Reads the stream into the list to its end, so that a test sees how far it has come.
QCoro::Task<> readLines(CLI* cli, QStringList args, std::shared_ptr<QStringList> lines)
{
    auto stream = cli->lines(args);
    for (auto line = co_await stream.begin(); line != stream.end(); co_await ++line) {
        lines->append(*line);
    }
}

QCoro::Task<qsizetype> countLines(CLI* cli, QStringList args)
{
    qsizetype count = 0;
    auto stream = cli->lines(args);
    for (auto line = co_await stream.begin(); line != stream.end(); co_await ++line) {
        ++count;
    }
    co_return count;
}

/// Takes one line and leaves.
QCoro::Task<QString> firstLine(CLI* cli)
{
    const QStringList none;
    auto stream = cli->lines(none);
    const auto line = co_await stream.begin();
    if (line == stream.end()) {
        co_return u"nothing"_s;
    }
    co_return *line;
}

QStringList linesOf(CLI& cli, const QStringList& args = {})
{
    const auto lines = std::make_shared<QStringList>();
    await(readLines(&cli, args, lines));
    return *lines;
}

void touch(const QString& path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
}

} // namespace

class DriveToolLinesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void lastLineWithoutBreakIsYielded()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out": "one\ntwo\r\n\nthr"}, {"pause": 5}, {"out": "ee"}])");
        ProcessCLI cli(tool.path());
        QCOMPARE(linesOf(cli, {u"check"_s, u"--json"_s}),
                 (QStringList{u"one"_s, u"two"_s, QString(), u"three"_s}));
        QCOMPARE(tool.runs(), (QList<QStringList>{{u"check"_s, u"--json"_s}}));
    }

    void noOutputIsNoLine()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"err": "only an error\n"}])");
        ProcessCLI cli(tool.path());
        QCOMPARE(linesOf(cli), QStringList());
    }

    void exitStatusAndErrorTextAreNotNoticed()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out": "row\n"}, {"flood": {"stream": "err", "bytes": 1000000}}, {"exit": 3}])");
        ProcessCLI cli(tool.path());
        QCOMPARE(linesOf(cli), QStringList{u"row"_s});
        tool.plays(R"([{"out": "row"}, {"signal": 9}])");
        QCOMPARE(linesOf(cli), QStringList{u"row"_s});
    }

    void whatTheToolWritesToItsErrorOutputGoesNowhere()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"err": "noise that nobody sees"}, {"out": "row\n"}, {"hang_while_read": true}])");
        QFile ours(tool.file(u"our errors"_s));
        QVERIFY(ours.open(QIODevice::ReadWrite));
        ProcessCLI cli(tool.path());
        QString target;
        {
            const int saved = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 100);
            const auto back = qScopeGuard([saved] {
                ::dup2(saved, STDERR_FILENO);
                ::close(saved);
            });
            ::dup2(ours.handle(), STDERR_FILENO);
            const auto lines = std::make_shared<QStringList>();
            const auto reading = std::make_shared<Settled<void>>();
            const auto settling = settle(readLines(&cli, {}, lines), reading);
            QTRY_VERIFY(!lines->isEmpty());
            target = QFile::symLinkTarget(u"/proc/%1/fd/2"_s.arg(tool.processes().constFirst()));
            ::kill(static_cast<pid_t>(tool.processes().constFirst()), SIGKILL);
            QTRY_VERIFY(reading->done);
        }
        QCOMPARE(target, u"/dev/null"_s);
        QCOMPARE(ours.size(), 0);
    }

    void toolThatCannotBeStartedThrowsToTheReader()
    {
        ProcessCLI cli(u"/nonexistent/ferrobank"_s);
        auto neverRead = cli.lines({});
        QVERIFY_THROWS_EXCEPTION(LaunchError, linesOf(cli));
    }

    void toolIsStartedBeforeTheFirstLineIsAskedFor()
    {
        const ScriptedTool tool;
        ProcessCLI cli(tool.path());
        const auto stream = cli.lines({});
        QTRY_COMPARE(tool.runs().size(), 1);
    }

    void linesArriveWhileTheToolRuns()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out": "first\nsec"}, {"wait_for": )" + tool.quoted(u"go"_s) +
                   R"(}, {"out": "ond\n"}])");
        ProcessCLI cli(tool.path());
        const auto lines = std::make_shared<QStringList>();
        auto reading = readLines(&cli, {}, lines);
        QTRY_COMPARE(*lines, QStringList{u"first"_s});
        touch(tool.file(u"go"_s));
        await(std::move(reading));
        QCOMPARE(*lines, (QStringList{u"first"_s, u"second"_s}));
    }

    void tornCharactersStayWholeAndInvalidOnesAreReplaced()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out_hex": "61c3"}, {"wait_for": )" + tool.quoted(u"go"_s) +
                   R"(}, {"out_hex": "a40aff0a"}])");
        ProcessCLI cli(tool.path());
        const auto lines = std::make_shared<QStringList>();
        auto reading = readLines(&cli, {}, lines);
        QTimer::singleShot(20, this, [&tool] { touch(tool.file(u"go"_s)); });
        await(std::move(reading));
        QCOMPARE(*lines, (QStringList{u"aä"_s, u"\uFFFD"_s}));
    }

    void streamEndsWithTheOutputNotWithTheProcess()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out": "row\n"}, {"close": "out"}, {"wait_for": )" + tool.quoted(u"go"_s) + "}]");
        ProcessCLI cli(tool.path());
        QCOMPARE(linesOf(cli), QStringList{u"row"_s});
        const auto process = static_cast<pid_t>(tool.processes().first());
        QCOMPARE(::kill(process, 0), 0);
        touch(tool.file(u"go"_s));
        QTRY_VERIFY(::kill(process, 0) != 0);
    }

    void streamGoesOnWhileAGrandchildHoldsTheOutput()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"grandchild": [{"wait_for": )" + tool.quoted(u"go"_s) +
                   R"(}, {"out": "late\n"}]}, {"out": "early\n"}])");
        ProcessCLI cli(tool.path());
        const auto lines = std::make_shared<QStringList>();
        auto reading = readLines(&cli, {}, lines);
        QTRY_COMPARE(*lines, QStringList{u"early"_s});
        const auto process = static_cast<pid_t>(tool.processes().first());
        QTRY_VERIFY(::kill(process, 0) != 0);
        touch(tool.file(u"go"_s));
        await(std::move(reading));
        QCOMPARE(*lines, (QStringList{u"early"_s, u"late"_s}));
    }

    void readerThatLeavesEarlyDoesNotEndTheTool()
    {
        const ScriptedTool tool;
        tool.plays(R"([{"out": "row\n"}, {"flood": {"bytes": 1000000}}, {"touch": )" +
                   tool.quoted(u"done"_s) + "}]");
        ProcessCLI cli(tool.path());
        const ProcessFacts before;
        QCOMPARE(await(firstLine(&cli)), u"row"_s);
        QTRY_VERIFY(QFile::exists(tool.file(u"done"_s)));
        QTRY_COMPARE(before.children(), 0);
        QTRY_COMPARE(ProcessFacts().openDescriptors, before.openDescriptors);
    }

    void endlessLineIsDroppedAndMemoryStaysBounded()
    {
        constexpr qint64 kBound = 4 * LineSplitter::kLongestLine;
        const ScriptedTool tool;
        tool.plays(R"([{"out": "before\n"}, {"flood": {"bytes": 104857600}}, {"out": "\nafter\n"}])");
        ProcessCLI cli(tool.path());
        ProcessFacts::resetPeak();
        const ProcessFacts before;
        QCOMPARE(linesOf(cli), (QStringList{u"before"_s, u"after"_s}));
        const qint64 grown = ProcessFacts().peakBytes - before.residentBytes;
        if (!ProcessFacts::freedMemoryIsReused()) {
            QSKIP("this build keeps freed memory, to find late uses of it");
        }
        QVERIFY2(grown < kBound, qPrintable(QString::number(grown)));
    }

    void manyLinesKeepTheEventLoopTurning()
    {
        constexpr qsizetype kLines = 300'000;
        const ScriptedTool tool;
        tool.plays(R"([{"lines": {"count": 300000, "text": "row @"}}])");
        ProcessCLI cli(tool.path());
        int turns = 0;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&turns] { ++turns; });
        timer.start(0);
        QCOMPARE(await(countLines(&cli, {})), kLines);
        QVERIFY2(turns > 100, qPrintable(QString::number(turns)));
    }

    void twoStreamsAtATimeStayApart()
    {
        const ScriptedTool tool;
        tool.scenario(R"({"runs": [{"args": ["a"], "play": [{"lines": {"count": 20000, "text": "a"}}]},
                                   {"args": ["b"], "play": [{"lines": {"count": 20000, "text": "b"}}]}]})");
        ProcessCLI cli(tool.path());
        const auto first = std::make_shared<QStringList>();
        const auto second = std::make_shared<QStringList>();
        auto one = readLines(&cli, {u"a"_s}, first);
        auto other = readLines(&cli, {u"b"_s}, second);
        await(std::move(one));
        await(std::move(other));
        QCOMPARE(first->count(u"a"_s), 20000);
        QCOMPARE(first->size(), 20000);
        QCOMPARE(second->count(u"b"_s), 20000);
        QCOMPARE(second->size(), 20000);
    }

    void hangingStreamHoldsNoRunUp()
    {
        const ScriptedTool tool;
        tool.scenario(R"({"runs": [{"args": ["check"], "play": [{"hang": true}]},
                                   {"args": ["status"], "play": [{"out": "fine"}]}]})");
        ProcessCLI cli(tool.path());
        const auto lines = std::make_shared<QStringList>();
        auto reading = readLines(&cli, {u"check"_s}, lines);
        QTRY_COMPARE(tool.processes().size(), 1);
        const QStringList args{u"status"_s};
        QCOMPARE(await(cli.run(args)), u"fine"_s);
        ::kill(static_cast<pid_t>(tool.processes().first()), SIGKILL);
        await(std::move(reading));
        QVERIFY(lines->isEmpty());
    }
};

FERROBANK_TEST(DriveToolLinesTest)
#include "DriveToolLinesTest.moc"
