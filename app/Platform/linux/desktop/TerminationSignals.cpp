#include "Platform/TerminationSignals.h"

#include <QtCore/QSocketNotifier>

#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <utility>

namespace ferrobank {

namespace {

constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

/// Written to from the handler; there is one process and so one of it.
int wakeUp = -1;

void noteSignal(int)
{
    const int before = errno;
    const uint64_t one = 1;
    // Nothing may be done about a failure here; the counter cannot overflow with real signals.
    [[maybe_unused]] const ssize_t written = write(wakeUp, &one, sizeof one);
    errno = before;
}

class SignalWatch : public TerminationSignals {
public:
    explicit SignalWatch(std::function<void()> requested)
        : _requested(std::move(requested)), _readable(open(), QSocketNotifier::Read)
    {
        QObject::connect(&_readable, &QSocketNotifier::activated, &_readable, [this] { take(); });
        struct sigaction action{};
        action.sa_handler = noteSignal;
        action.sa_flags = SA_RESTART;
        for (size_t index = 0; index < kSignals.size(); ++index) {
            sigaction(kSignals[index], &action, &_before[index]);
        }
    }

    ~SignalWatch() override
    {
        for (size_t index = 0; index < kSignals.size(); ++index) {
            sigaction(kSignals[index], &_before[index], nullptr);
        }
        _readable.setEnabled(false);
        close(std::exchange(wakeUp, -1));
    }

private:
    static int open()
    {
        wakeUp = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        return wakeUp;
    }

    void take()
    {
        uint64_t count = 0;
        if (read(wakeUp, &count, sizeof count) == sizeof count) {
            _requested();
        }
    }

    std::function<void()> _requested;
    QSocketNotifier _readable;
    std::array<struct sigaction, kSignals.size()> _before{};
};

} // namespace

std::unique_ptr<TerminationSignals> TerminationSignals::watch(std::function<void()> requested)
{
    return std::make_unique<SignalWatch>(std::move(requested));
}

} // namespace ferrobank
