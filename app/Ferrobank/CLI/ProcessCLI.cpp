#include "Ferrobank/CLI/ProcessCLI.h"

#include "Ferrobank/CLI/LineSplitter.h"
#include "Platform/Bundle.h"
#include "Platform/ChildProcess.h"
#include "Platform/Latch.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QStringDecoder>

#include <memory>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

/// Keeps every byte's meaning, a byte order mark included; invalid sequences are replaced.
QString textOf(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
    return decoder(bytes);
}

/// Longer than a poll of the status takes, and too short to be noticed by who floods us.
constexpr std::chrono::milliseconds kPatience{50};

/// Both outputs of one run, while it runs and after it.
struct Captured {
    QByteArray output;
    QByteArray errorText;
};

/// What the tool has printed and the reader has not had yet.
struct LineFeed {
    LineSplitter splitter;
    Latch arrived;
    bool ended = false;

    void add(const QByteArray& piece)
    {
        if (piece.isEmpty()) {
            ended = true;
            splitter.end();
        } else {
            splitter.append(piece);
        }
        std::exchange(arrived, Latch()).open();
    }
};

/// Lines given out between two turns of the event loop, so that a flood of them freezes nothing.
constexpr int kLinesInOneGo = 512;

Latch nextTurnOfEventLoop()
{
    Latch turn;
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [turn]() mutable { turn.open(); }, Qt::QueuedConnection);
    return turn;
}

/// Holds the process: a reader that leaves destroys this, and with it our interest in the output.
QCoro::AsyncGenerator<QString> linesOf([[maybe_unused]] std::unique_ptr<ChildProcess> process,
                                       std::shared_ptr<LineFeed> feed, std::exception_ptr launchError)
{
    if (launchError) {
        std::rethrow_exception(launchError);
    }
    int given = 0;
    for (;;) {
        while (const auto line = feed->splitter.next()) {
            QString text = QString::fromUtf8(*line);
            co_yield text;
            if (++given % kLinesInOneGo == 0) {
                const Latch turn = nextTurnOfEventLoop();
                co_await turn.wait();
            }
        }
        if (feed->ended) {
            co_return;
        }
        const Latch arrived = feed->arrived;
        co_await arrived.wait();
    }
}

} // namespace

CLI& CLI::shared()
{
    static ProcessCLI cli(QString::fromStdString(Bundle::main().driveTool().string()));
    return cli;
}

QCoro::Task<QString> ProcessCLI::run(QStringList args)
{
    const auto captured = std::make_shared<Captured>();
    ChildProcess::Setup setup;
    setup.program = _tool;
    setup.arguments = args;
    setup.output = [captured](const QByteArray& piece) { captured->output += piece; };
    setup.errorText = [captured](const QByteArray& piece) { captured->errorText += piece; };
    setup.patience = kPatience;
    const auto process = ChildProcess::launch(std::move(setup));
    const int status = co_await process->finished();
    if (status == 0) {
        co_return textOf(captured->output);
    }
    const QString message = textOf(captured->errorText).trimmed();
    throw Failure(message.isEmpty() ? u"ferrobank %1 failed"_s.arg(args.join(u" "_s)) : message);
}

QCoro::AsyncGenerator<QString> ProcessCLI::lines(QStringList args)
{
    const auto feed = std::make_shared<LineFeed>();
    std::unique_ptr<ChildProcess> process;
    std::exception_ptr launchError;
    try {
        process = ChildProcess::launch(
            _tool, args, ChildProcess::StandardError::Discard,
            [feed](const QByteArray& piece) { feed->add(piece); }, nullptr);
    } catch (const LaunchError&) {
        launchError = std::current_exception();
    }
    return linesOf(std::move(process), feed, launchError);
}

} // namespace ferrobank
