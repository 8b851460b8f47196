#include "sharing/Throttle.h"

#include <time.h>

#include <condition_variable>
#include <mutex>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr Seconds kPeriod{10};
/// Shorter pauses cost more in wake-ups than they give back.
constexpr Seconds kShortestPause{0.02};

Seconds threadTime()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace

Throttle::Throttle(double share, std::stop_token stop)
    : _share(share), _stop(std::move(stop)), _processorAtStart(threadTime())
{
    startPeriod();
}

void Throttle::startPeriod()
{
    _processorAtPeriod = threadTime();
    _periodStart = std::chrono::steady_clock::now();
}

bool Throttle::goOn()
{
    if (_stop.stop_requested()) {
        return false;
    }
    const Seconds wall = std::chrono::steady_clock::now() - _periodStart;
    const Seconds pause = pauseForShare(threadTime() - _processorAtPeriod, wall, _share);
    if (pause >= kShortestPause) {
        std::mutex mutex;
        std::condition_variable_any nobodyNotifies;
        std::unique_lock lock(mutex);
        nobodyNotifies.wait_for(lock, _stop, pause, [] { return false; });
    } else if (pause == Seconds{0} && wall > kPeriod) {
        // A long wait for the disk must not become a credit for a burst later.
        startPeriod();
    }
    return !_stop.stop_requested();
}

Seconds Throttle::processorTime() const
{
    return threadTime() - _processorAtStart;
}

} // namespace ferrobank::drive
