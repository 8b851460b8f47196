#include "support/fakes/VirtualClock.h"

#include <algorithm>
#include <utility>

namespace ferrobank {

class VirtualClock::Nap {
public:
    Nap(VirtualClock& clock, Milliseconds duration) : _clock(clock), _duration(duration) {}

    [[nodiscard]] bool await_ready() const { return false; }

    void await_suspend(std::coroutine_handle<> handle)
    {
        if (_duration <= Milliseconds(0)) {
            _clock._resting.append(handle);
            _clock._turn.start();
            return;
        }
        const Sleeper sleeper{_clock._now + _duration, handle};
        const auto later =
            std::ranges::upper_bound(_clock._sleepers, sleeper.deadline, {}, &Sleeper::deadline);
        _clock._sleepers.insert(later, sleeper);
    }

    void await_resume() const {}

private:
    VirtualClock& _clock;
    Milliseconds _duration;
};

VirtualClock::VirtualClock()
{
    _turn.setSingleShot(true);
    _turn.setInterval(0);
    QObject::connect(&_turn, &QTimer::timeout, &_turn, [this] { endTurn(); });
}

VirtualClock::~VirtualClock()
{
    for (const Sleeper& sleeper : std::exchange(_sleepers, {})) {
        sleeper.handle.resume();
    }
    endTurn();
}

QCoro::Task<> VirtualClock::sleep(Milliseconds duration)
{
    _sleeps.append(duration);
    Nap nap(*this, duration);
    co_await nap;
}

void VirtualClock::advance(Milliseconds duration)
{
    const Milliseconds until = _now + duration;
    while (wakeNext(until)) {
    }
    _wall += until - _now;
    _now = until;
}

bool VirtualClock::wakeNext(Milliseconds until)
{
    if (_sleepers.isEmpty() || _sleepers.constFirst().deadline > until) {
        return false;
    }
    const Sleeper next = _sleepers.takeFirst();
    _wall += next.deadline - _now;
    _now = next.deadline;
    next.handle.resume();
    return true;
}

void VirtualClock::endTurn()
{
    for (const std::coroutine_handle<> resting : std::exchange(_resting, {})) {
        resting.resume();
    }
}

} // namespace ferrobank
