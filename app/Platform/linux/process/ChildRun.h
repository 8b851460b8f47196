#pragma once

#include "Platform/ChildProcess.h"
#include "Platform/Latch.h"
#include "Platform/linux/process/Launch.h"

#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>

#include <chrono>
#include <memory>

namespace ferrobank {

/// What becomes of a child; outlives the run for those who still ask.
struct ChildOutcome {
    Latch exited;
    Latch outputEnded;
    int status = -1;
};

/// Reads one of a child's outputs to its end. Main thread.
class OutputPipe {
public:
    /// No descriptor: the output is at its end already. `ended` is called once, after the sink has had its
    /// empty piece.
    OutputPipe(Descriptor descriptor, ChildProcess::Sink sink, std::function<void()> ended);

    [[nodiscard]] bool isOpen() const { return _descriptor.isOpen(); }

    /// From now on reads what comes when it comes.
    void follow();

    /// What still comes is read and dropped.
    void discard();

    /// Reads what is there now, without waiting, but not more than a pipe holds.
    void drain();

private:
    void deliver(const QByteArray& piece);
    void end();

    Descriptor _descriptor;
    std::unique_ptr<QSocketNotifier> _notifier;
    ChildProcess::Sink _sink;
    std::function<void()> _ended;
    bool _discarding = false;
};

/// The part of a child process that stays until the child has been reaped and its pipes are at their end.
/// Owned by the application object; goes away by itself.
class ChildRun final : public QObject {
    Q_OBJECT

public:
    ChildRun(LaunchedChild child, ChildProcess::Sink output, ChildProcess::Sink errorText,
             std::chrono::milliseconds patience);

    [[nodiscard]] std::shared_ptr<ChildOutcome> outcome() const { return _outcome; }

    /// Nobody listens any more.
    void abandon();

private:
    void follow();
    void reap();
    void outputEnded();
    void settle();
    void finish();

    std::shared_ptr<ChildOutcome> _outcome = std::make_shared<ChildOutcome>();
    Descriptor _exit;
    QSocketNotifier _exitNotifier;
    QTimer _patience;
    QTimer _grace;
    bool _reaped = false;
    bool _abandoned = false;
    OutputPipe _output;
    OutputPipe _errorText;
};

} // namespace ferrobank
