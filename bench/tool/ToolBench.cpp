// What running the drive tool costs this program. Use a release build on a quiet machine:
//
//   tool-bench [rounds]
//
// Lines: the same 1,000,000 lines of one file, written by cat, through CLI::lines, undecoded, beside "wc -l",
// in turns. Poll: "status --json" through CLI::json, and the processor time of this process alone.

#include "Ferrobank/CLI/DriveStatus.h"
#include "Ferrobank/CLI/ProcessCLI.h"
#include "support/ProcessFacts.h"
#include "support/ScriptedTool.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

using namespace ferrobank;
using namespace ferrobank::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int kLines = 1'000'000;
constexpr int kPolls = 300;

double processorMilliseconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double elapsedMilliseconds(const QElapsedTimer& timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

struct Series {
    std::vector<double> wall;
    std::vector<double> processor;
};

QCoro::Task<int> countLines(CLI* cli)
{
    const QStringList args{u"check"_s};
    int count = 0;
    auto stream = cli->lines(args);
    for (auto line = co_await stream.begin(); line != stream.end(); co_await ++line) {
        ++count;
    }
    co_return count;
}

/// A shell's pipe between two of the system's programs.
double countWithTheSystemsPrograms(const QString& file)
{
    QProcess writer;
    QProcess counter;
    writer.setStandardOutputProcess(&counter);
    QElapsedTimer timer;
    timer.start();
    counter.start(u"wc"_s, {u"-l"_s});
    writer.start(u"cat"_s, {file});
    writer.waitForFinished(-1);
    counter.waitForFinished(-1);
    if (counter.readAllStandardOutput().trimmed().toInt() != kLines) {
        qFatal("wc counted something else");
    }
    return elapsedMilliseconds(timer);
}

QCoro::Task<> measureLines(int rounds)
{
    const ScriptedTool tool;
    const QString file = tool.file(u"lines"_s);
    QFile lines(file);
    if (!lines.open(QIODevice::WriteOnly)) {
        qFatal("cannot write the lines");
    }
    for (int i = 0; i < kLines; ++i) {
        lines.write(R"({"id":"check-)" + QByteArray::number(i) +
                    "\",\"title\":\"Drive is mounted\",\"state\":\"pass\"}\n");
    }
    lines.close();
    // The very program that writes for the other side.
    QFile writer(tool.file(u"writer"_s));
    if (!writer.open(QIODevice::WriteOnly)) {
        qFatal("cannot write the writer");
    }
    writer.write("#!/bin/sh\nexec cat '" + QFile::encodeName(file) + "'\n");
    writer.setPermissions(QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    writer.close();
    ProcessCLI cli(writer.fileName());

    Series ours;
    std::vector<double> theirs;
    const ProcessFacts before;
    ProcessFacts::resetPeak();
    for (int i = 0; i < rounds; ++i) {
        theirs.push_back(countWithTheSystemsPrograms(file));
        QElapsedTimer timer;
        timer.start();
        const double processor = processorMilliseconds();
        const int count = co_await countLines(&cli);
        ours.wall.push_back(elapsedMilliseconds(timer));
        ours.processor.push_back(processorMilliseconds() - processor);
        if (count != kLines) {
            qFatal("lines are missing");
        }
    }
    const ProcessFacts after;
    std::printf("| %d lines, median of %d | ms | own processor time, ms |\n|---|---|---|\n", kLines, rounds);
    std::printf("| cat and wc -l | %.1f | |\n", median(theirs));
    std::printf("| CLI::lines, undecoded | %.1f | %.1f |\n", median(ours.wall), median(ours.processor));
    std::printf("\n%.1f million lines a second; resident memory grew by %.1f MB, at its peak by %.1f MB\n\n",
                kLines / median(ours.wall) / 1e3,
                static_cast<double>(after.residentBytes - before.residentBytes) / 1e6,
                static_cast<double>(after.peakBytes - before.residentBytes) / 1e6);
}

QCoro::Task<> measurePolls()
{
    const ScriptedTool tool;
    tool.prints(
        R"({"installed":true,"mounted":true,"mountpoint":"/home/ann/Ferrobank","volume_used":12400000000,)"
        R"("store_bytes":4300000000,"saved":8100000000,"log":"/home/ann/ferrobank.log"})");
    ProcessCLI cli(tool.path());
    const QStringList args{u"status"_s, u"--json"_s};
    Series polls;
    for (int i = 0; i < kPolls; ++i) {
        QElapsedTimer timer;
        timer.start();
        const double processor = processorMilliseconds();
        const auto status = co_await cli.json<DriveStatus>(args);
        polls.wall.push_back(elapsedMilliseconds(timer));
        polls.processor.push_back(processorMilliseconds() - processor);
        if (!status) {
            qFatal("a poll failed");
        }
    }
    std::printf("| %d polls, median | ms | own processor time, ms |\n|---|---|---|\n", kPolls);
    std::printf("| CLI::json of a status | %.2f | %.3f |\n", median(polls.wall), median(polls.processor));
}

QCoro::Task<> measure(int rounds)
{
    co_await measureLines(rounds);
    co_await measurePolls();
    QCoreApplication::quit();
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const int rounds = argc > 1 ? QCoreApplication::arguments().at(1).toInt() : 10;
    QTimer::singleShot(0, [rounds] { const auto measuring = measure(rounds); });
    return QCoreApplication::exec();
}
