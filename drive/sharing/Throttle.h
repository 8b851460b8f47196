#pragma once

#include "figures/Pacing.h"

#include <chrono>
#include <stop_token>

namespace ferrobank::drive {

/// Keeps the thread that made it at a share of one core, averaged over ten seconds at a time, by pausing
/// between steps. Used on that thread only.
class Throttle {
public:
    /// `share` is between 0 (excluded) and 1; 1 never pauses.
    Throttle(double share, std::stop_token stop);

    /// Called between steps of at most some ten milliseconds. Pauses if the share is used up; a request to
    /// stop ends the pause. Answers whether to go on.
    [[nodiscard]] bool goOn();

    [[nodiscard]] bool stopped() const { return _stop.stop_requested(); }

    [[nodiscard]] const std::stop_token& stopToken() const { return _stop; }

    /// Processor time of this thread since the throttle was made.
    [[nodiscard]] Seconds processorTime() const;

private:
    void startPeriod();

    double _share;
    std::stop_token _stop;
    Seconds _processorAtStart;
    Seconds _processorAtPeriod{};
    std::chrono::steady_clock::time_point _periodStart;
};

} // namespace ferrobank::drive
