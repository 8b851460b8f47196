#pragma once

#include <QCoro/QCoroTask>

#include <chrono>

namespace ferrobank {

/// Time, so that five minutes pass in a millisecond in a test. Main thread.
class Clock {
public:
    virtual ~Clock() = default;

    /// Suspends the caller for the time on the monotonic clock, with no tolerance. Returns early only when
    /// the clock itself goes away.
    virtual QCoro::Task<> sleep(std::chrono::milliseconds duration) = 0;

    /// The time of day, which may jump in both directions.
    [[nodiscard]] virtual std::chrono::system_clock::time_point wallTime() const = 0;
};

} // namespace ferrobank
