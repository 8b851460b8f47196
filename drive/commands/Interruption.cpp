#include "commands/Interruption.h"

#include <signal.h>

#include <ctime>

namespace ferrobank::drive {

namespace {

constexpr long kStepNanoseconds = 100'000'000;

sigset_t interruptingSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&signals, number);
    }
    return signals;
}

} // namespace

Interruption::Interruption()
{
    const sigset_t signals = interruptingSignals();
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    _thread = std::jthread([this](const std::stop_token& stop) {
        const sigset_t awaited = interruptingSignals();
        while (!stop.stop_requested()) {
            const timespec step{.tv_sec = 0, .tv_nsec = kStepNanoseconds};
            if (::sigtimedwait(&awaited, nullptr, &step) > 0) {
                _source.request_stop();
            }
        }
    });
}

Interruption::~Interruption()
{
    _thread.request_stop();
    _thread.join();
    const sigset_t signals = interruptingSignals();
    ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

} // namespace ferrobank::drive
