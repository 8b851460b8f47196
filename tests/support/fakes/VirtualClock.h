#pragma once

#include "Platform/Clock.h"

#include <QtCore/QList>
#include <QtCore/QTimer>

#include <coroutine>

namespace ferrobank {

/// A clock that a test moves. Wall time and monotonic time are separate: advance() moves both, jumpWall()
/// only the time of day. Sleepers wake inside advance(), in the order of their deadlines, each at its own
/// time; a sleep of no length ends with the next turn of the event loop. What still sleeps is woken when the
/// clock goes away, so it has to outlive the objects whose operations sleep.
class VirtualClock : public Clock {
public:
    using Milliseconds = std::chrono::milliseconds;

    VirtualClock();
    ~VirtualClock() override;
    VirtualClock(const VirtualClock&) = delete;
    VirtualClock& operator=(const VirtualClock&) = delete;

    QCoro::Task<> sleep(Milliseconds duration) override;

    [[nodiscard]] std::chrono::system_clock::time_point wallTime() const override { return _wall; }

    void advance(Milliseconds duration);

    void jumpWall(Milliseconds distance) { _wall += distance; }

    /// Since the clock was made.
    [[nodiscard]] Milliseconds monotonicTime() const { return _now; }

    [[nodiscard]] int sleepers() const { return static_cast<int>(_sleepers.size()); }

    /// How long everybody who ever slept asked for, in order.
    [[nodiscard]] const QList<Milliseconds>& sleeps() const { return _sleeps; }

    void forgetSleeps() { _sleeps = {}; }

private:
    struct Sleeper {
        Milliseconds deadline;
        std::coroutine_handle<> handle;
    };

    class Nap;

    bool wakeNext(Milliseconds until);
    void endTurn();

    Milliseconds _now{0};
    std::chrono::system_clock::time_point _wall{std::chrono::hours(24 * 365 * 50)};
    QList<Sleeper> _sleepers;
    QList<std::coroutine_handle<>> _resting; ///< asleep for no length, until the next turn
    QList<Milliseconds> _sleeps;
    QTimer _turn;
};

} // namespace ferrobank
