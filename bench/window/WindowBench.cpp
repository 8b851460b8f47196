// What the window costs in its own process, on fakes: the time from open() to the first frame, and the frames
// while the drive's figures change, while they do not, and while a flood of check rows comes in. Prints one
// Markdown table. Draws into memory where there is no display.
//
//   window-bench [openings]

#include "support/offline/Stage.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QTextStream>
#include <QtCore/QTimer>
#include <QtGui/QGuiApplication>
#include <QtQuick/QQuickWindow>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ferrobank;

namespace {

constexpr int kPolls = 100;
constexpr int kRows = 100'000;

double milliseconds(const QElapsedTimer& timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double median(QList<double> values)
{
    std::ranges::sort(values);
    return values.at(values.size() / 2);
}

/// Waits without turning in circles.
template <typename Condition>
void waitFor(Condition condition)
{
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void letPass(std::chrono::milliseconds time)
{
    bool over = false;
    QTimer::singleShot(time, [&over] { over = true; });
    waitFor([&over] { return over; });
}

/// Counts the frames of a window, and how long the longest took from its first step to the screen.
class Frames {
public:
    explicit Frames(QQuickWindow& window)
    {
        QObject::connect(&window, &QQuickWindow::afterAnimating, &_context, [this] { _frame.start(); });
        QObject::connect(&window, &QQuickWindow::frameSwapped, &_context, [this] {
            ++_count;
            _longest = std::max(_longest, milliseconds(_frame));
        });
    }

    [[nodiscard]] int count() const { return _count; }

    [[nodiscard]] double longest() const { return _longest; }

private:
    QObject _context;
    QElapsedTimer _frame;
    int _count = 0;
    double _longest = 0;
};

QQuickWindow& windowOf(Stage& stage)
{
    return *qobject_cast<QQuickWindow*>(stage.mainWindow().window());
}

/// The time until the first frame. The window stays open.
double open(Stage& stage)
{
    QElapsedTimer timer;
    timer.start();
    bool drawn = false;
    stage.mainWindow().open({});
    QObject::connect(&windowOf(stage), &QQuickWindow::frameSwapped, &windowOf(stage),
                     [&drawn] { drawn = true; });
    waitFor([&drawn] { return drawn; });
    const double result = milliseconds(timer);
    QObject::disconnect(&windowOf(stage), &QQuickWindow::frameSwapped, &windowOf(stage), nullptr);
    return result;
}

void close(Stage& stage)
{
    stage.mainWindow().close();
    waitFor([&stage] { return stage.mainWindow().window() == nullptr; });
}

std::unique_ptr<Stage> mountedStage()
{
    auto stage = std::make_unique<Stage>();
    stage->seam.finishSetup();
    stage->seam.cli.answerStatus(mountedStatus());
    stage->start();
    QCoreApplication::processEvents();
    return stage;
}

void print(const QString& what, const QString& value)
{
    QTextStream(stdout) << u"| "_s << what << u" | "_s << value << u" |"_s << Qt::endl;
}

QString inMilliseconds(double value)
{
    return QString::number(value, 'f', 1) + u" ms"_s;
}

void measureOpenings(int openings)
{
    const auto stage = mountedStage();
    const double cold = open(*stage);
    close(*stage);
    QList<double> warm;
    for (int opening = 0; opening < openings; ++opening) {
        warm.append(open(*stage));
        close(*stage);
    }
    print(u"open() to the first frame, first time"_s, inMilliseconds(cold));
    print(u"open() to the first frame, later (median of %1)"_s.arg(openings), inMilliseconds(median(warm)));
}

void measurePolls()
{
    const auto stage = mountedStage();
    open(*stage);
    letPass(500ms); // what moves at the opening has come to rest
    const Frames frames(windowOf(*stage));
    for (int poll = 0; poll < kPolls; ++poll) {
        stage->seam.clock.advance(5s);
        letPass(5ms);
    }
    print(u"frames during %1 polls that change nothing"_s.arg(kPolls), QString::number(frames.count()));

    const Frames changing(windowOf(*stage));
    for (int poll = 1; poll <= kPolls; ++poll) {
        DriveStatus status = mountedStatus();
        status.volume_used = 12'000'000'000U + 700'000'000U * static_cast<quint64>(poll);
        stage->seam.cli.answerStatus(status);
        stage->seam.clock.advance(5s);
        letPass(20ms);
    }
    letPass(500ms);
    print(u"frames during %1 polls that change the figures"_s.arg(kPolls), QString::number(changing.count()));
    print(u"the longest of them"_s, inMilliseconds(changing.longest()));
}

void measureRows()
{
    QStringList lines;
    for (int row = 0; row < kRows; ++row) {
        lines.append(toJson(CheckItem{.id = QString::number(row),
                                      .title = u"Part %1 of the store"_s.arg(row),
                                      .state = CheckItem::State::Pass,
                                      .detail = u"All is well."_s,
                                      .fix = {},
                                      .action = {}}));
    }
    const auto stage = mountedStage();
    stage->model().setScreen(Screen::checks());
    stage->seam.cli.streamLines(lines);
    open(*stage);
    letPass(500ms);
    const Frames frames(windowOf(*stage));
    double longestTurn = 0;
    QElapsedTimer all;
    all.start();
    const auto running = stage->model().runChecks();
    while (stage->model().checksRunning()) {
        QElapsedTimer turn;
        turn.start();
        QCoreApplication::processEvents();
        longestTurn = std::max(longestTurn, milliseconds(turn));
    }
    letPass(500ms);
    print(u"%1 check rows on the open checks screen"_s.arg(kRows), inMilliseconds(milliseconds(all)));
    print(u"frames meanwhile"_s, QString::number(frames.count()));
    print(u"the longest of them"_s, inMilliseconds(frames.longest()));
    print(u"longest time without a turn of the event loop"_s, inMilliseconds(longestTurn));
}

} // namespace

int main(int argc, char** argv)
{
    const QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    const int openings = argc > 1 ? QCoreApplication::arguments().at(1).toInt() : 20;
    QTextStream(stdout) << u"| Window (%1) | |\n|---|---|"_s.arg(QGuiApplication::platformName()) << Qt::endl;
    measureOpenings(openings);
    if (argc <= 2) {
        measurePolls();
        measureRows();
    }
    return 0;
}
