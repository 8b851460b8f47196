// What the model costs beside the drive tool: rows of a check stream applied a second, next to a plain loop
// over the same decoder, and the processor time of a poll. Prints one Markdown table; the figures are
// medians.

#include "Ferrobank/Async/Spawn.h"
#include "support/fakes/FakeSeam.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QTextStream>

#include <algorithm>
#include <ctime>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ferrobank;

namespace {

constexpr int kRepetitions = 11;
constexpr int kRows = 100'000;
constexpr int kPolls = 2'000;

double median(QList<double> values)
{
    std::ranges::sort(values);
    return values.at(values.size() / 2);
}

double processorSeconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

QStringList differentRows()
{
    QStringList lines;
    for (int row = 0; row < kRows; ++row) {
        lines.append(
            uR"({"id":"check-%1","title":"Check number %1","state":"pass","detail":"All is well."})"_s.arg(
                row));
    }
    return lines;
}

QStringList oneRowAgainAndAgain()
{
    QStringList lines;
    for (int row = 0; row < kRows; ++row) {
        lines.append(uR"({"id":"drive","title":"Drive","state":"running","detail":"%1 files"})"_s.arg(row));
    }
    return lines;
}

/// Rows a second of a loop that only decodes and keeps the rows.
double plainLoop(const QStringList& lines)
{
    QElapsedTimer timer;
    timer.start();
    QList<CheckItem> rows;
    for (const QString& line : lines) {
        rows.append(CheckItem::decode(line.toUtf8()));
    }
    return static_cast<double>(rows.size()) * 1e9 / static_cast<double>(timer.nsecsElapsed());
}

struct Applied {
    double rowsASecond = 0;
    double longestTurn = 0; ///< milliseconds in which the event loop had no turn
};

Applied applied(const QStringList& lines)
{
    FakeSeam seam;
    AppModel model(seam.collaborators());
    QCoreApplication::processEvents();
    seam.cli.streamLines(lines);
    Applied result;
    QElapsedTimer timer;
    timer.start();
    spawn(&model, model.runChecks());
    qint64 before = 0;
    while (model.checksRunning()) {
        result.longestTurn =
            std::max(result.longestTurn, static_cast<double>(timer.nsecsElapsed() - before) / 1e6);
        before = timer.nsecsElapsed();
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    result.rowsASecond = static_cast<double>(lines.size()) * 1e9 / static_cast<double>(timer.nsecsElapsed());
    return result;
}

/// Microseconds of processor time for one poll of a mounted drive, the tool's own run excluded.
double pollCost()
{
    FakeSeam seam;
    seam.cli.answerStatus(mountedStatus());
    AppModel model(seam.collaborators());
    QCoreApplication::processEvents();
    const double before = processorSeconds();
    for (int poll = 0; poll < kPolls; ++poll) {
        seam.clock.advance(5s);
    }
    return (processorSeconds() - before) * 1e6 / kPolls;
}

template <typename Measure>
double medianOf(Measure measure)
{
    QList<double> values;
    for (int repetition = 0; repetition < kRepetitions; ++repetition) {
        values.append(measure());
    }
    return median(values);
}

void print(const QString& what, double value, const QString& unit)
{
    QTextStream(stdout) << u"| "_s << what << u" | "_s << QString::number(value, 'f', value < 100 ? 2 : 0)
                        << u' ' << unit << u" |"_s << Qt::endl;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList many = differentRows();
    const QStringList one = oneRowAgainAndAgain();
    QTextStream(stdout) << u"| Model (median of %1) | |\n|---|---|"_s.arg(kRepetitions) << Qt::endl;
    print(u"100,000 rows decoded by a plain loop"_s, medianOf([&many] { return plainLoop(many); }),
          u"rows/s"_s);
    print(u"100,000 different rows applied"_s, medianOf([&many] { return applied(many).rowsASecond; }),
          u"rows/s"_s);
    print(u"100,000 changes of one row applied"_s, medianOf([&one] { return applied(one).rowsASecond; }),
          u"rows/s"_s);
    print(u"longest time without a turn of the event loop"_s,
          medianOf([&many] { return applied(many).longestTurn; }), u"ms"_s);
    print(u"processor time of one poll, without the tool"_s, medianOf(pollCost), u"µs"_s);
    return 0;
}
