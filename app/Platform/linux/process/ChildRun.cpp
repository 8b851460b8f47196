#include "Platform/linux/process/ChildRun.h"

#include <QtCore/QCoreApplication>

#include <fcntl.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <chrono>

namespace ferrobank {

namespace {

/// How long the outputs of a child that has exited may stay open in another process before they no longer
/// count.
constexpr std::chrono::milliseconds kGrace{100};

constexpr int kSignalBase = 128;

} // namespace

OutputPipe::OutputPipe(Descriptor descriptor, ChildProcess::Sink sink, std::function<void()> ended)
    : _descriptor(std::move(descriptor)), _sink(std::move(sink)), _ended(std::move(ended))
{}

void OutputPipe::follow()
{
    if (_descriptor.isOpen() && !_notifier) {
        _notifier = std::make_unique<QSocketNotifier>(_descriptor.number(), QSocketNotifier::Read);
        QObject::connect(_notifier.get(), &QSocketNotifier::activated, _notifier.get(), [this] { drain(); });
    }
}

void OutputPipe::discard()
{
    _discarding = true;
    _sink = nullptr;
}

void OutputPipe::drain()
{
    if (!_descriptor.isOpen()) {
        return;
    }
    static std::array<char, std::size_t{64} * 1024> buffer; // the main thread's alone
    const int capacity = ::fcntl(_descriptor.number(), F_GETPIPE_SZ);
    for (qsizetype left = capacity; left > 0 && _descriptor.isOpen();) {
        const ssize_t count = ::read(_descriptor.number(), buffer.data(), buffer.size());
        if (count > 0) {
            left -= count;
            deliver(QByteArray(buffer.data(), count));
        } else if (count < 0 && errno == EINTR) {
            continue;
        } else if (count < 0 && errno == EAGAIN) {
            return;
        } else {
            end();
        }
    }
}

void OutputPipe::deliver(const QByteArray& piece)
{
    if (_sink) {
        // Out of the member while it runs: it may lead to discard().
        const ChildProcess::Sink sink = std::exchange(_sink, nullptr);
        sink(piece);
        if (!_discarding) {
            _sink = sink;
        }
    }
}

void OutputPipe::end()
{
    if (_notifier) {
        _notifier->setEnabled(false);
        _notifier.release()->deleteLater();
    }
    _descriptor.reset();
    deliver(QByteArray());
    _ended();
}

ChildRun::ChildRun(LaunchedChild child, ChildProcess::Sink output, ChildProcess::Sink errorText,
                   std::chrono::milliseconds patience)
    : QObject(QCoreApplication::instance()),
      _exit(std::move(child.exit)),
      _exitNotifier(_exit.number(), QSocketNotifier::Read),
      _output(std::move(child.output), std::move(output), [this] { outputEnded(); }),
      _errorText(std::move(child.errorText), std::move(errorText), [this] { settle(); })
{
    connect(&_exitNotifier, &QSocketNotifier::activated, this, &ChildRun::reap);
    if (patience.count() > 0) {
        _patience.setSingleShot(true);
        connect(&_patience, &QTimer::timeout, this, &ChildRun::follow);
        _patience.start(patience);
    } else {
        follow();
    }
    _grace.setSingleShot(true);
    connect(&_grace, &QTimer::timeout, this, &ChildRun::finish);
    if (!_output.isOpen()) {
        _outcome->outputEnded.open();
    }
}

void ChildRun::abandon()
{
    _abandoned = true;
    _output.discard();
    _errorText.discard();
    settle();
}

void ChildRun::follow()
{
    _patience.stop();
    _output.follow();
    _errorText.follow();
}

void ChildRun::reap()
{
    siginfo_t info{};
    const int result = ::waitid(P_PIDFD, static_cast<id_t>(_exit.number()), &info, WEXITED | WNOHANG);
    if (result == 0 && info.si_pid == 0) {
        return;
    }
    _exitNotifier.setEnabled(false);
    _exit.reset();
    _reaped = true;
    // Somebody else's wait() may have taken the status away: then it is unknown, and not a success.
    const bool exited = result == 0 && info.si_code == CLD_EXITED;
    _outcome->status = exited ? info.si_status : kSignalBase + (result == 0 ? info.si_status : 0);

    _output.drain();
    _errorText.drain();
    _patience.stop();
    if (_output.isOpen() || _errorText.isOpen()) {
        follow();
        _grace.start(kGrace);
    }
    settle();
}

void ChildRun::outputEnded()
{
    _outcome->outputEnded.open();
    settle();
}

void ChildRun::settle()
{
    if (!_reaped || _output.isOpen() || _errorText.isOpen()) {
        return;
    }
    if (_abandoned) {
        deleteLater();
    } else {
        finish();
    }
}

void ChildRun::finish()
{
    _grace.stop();
    if (!_outcome->exited.isOpen()) {
        _outcome->exited.open();
    }
}

} // namespace ferrobank
