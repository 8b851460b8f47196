#pragma once

#include "Platform/Clock.h"
#include "Platform/Latch.h"

#include <list>

namespace ferrobank::updates {

/// A clock that goes on while the computer is suspended: a sleep that is over by then ends right after waking
/// up. For waits of hours and days. Main thread, with an event loop.
class BootClock final : public Clock {
public:
    BootClock() = default;
    BootClock(const BootClock&) = delete;
    BootClock& operator=(const BootClock&) = delete;
    ~BootClock() override;

    QCoro::Task<> sleep(std::chrono::milliseconds duration) override;

    [[nodiscard]] std::chrono::system_clock::time_point wallTime() const override
    {
        return std::chrono::system_clock::now();
    }

private:
    std::list<Latch> _sleepers;
};

} // namespace ferrobank::updates
