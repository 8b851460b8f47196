#pragma once

#include "Platform/Clock.h"
#include "Platform/Latch.h"

#include <vector>

namespace ferrobank {

/// The computer's clocks. Sleeps are measured by the monotonic clock, which stands still while the computer
/// is suspended, to about a millisecond. Main thread. Destroying it ends every sleep at once.
class SystemClock final : public Clock {
public:
    SystemClock() = default;
    SystemClock(const SystemClock&) = delete;
    SystemClock& operator=(const SystemClock&) = delete;
    ~SystemClock() override;

    QCoro::Task<> sleep(std::chrono::milliseconds duration) override;

    [[nodiscard]] std::chrono::system_clock::time_point wallTime() const override;

private:
    std::vector<Latch> _sleeps;
};

} // namespace ferrobank
