#include "support/fakes/VirtualClock.h"

#include <algorithm>
#include <utility>

namespace ferrobank {

class VirtualClock::Nap {
public:
    Nap(VirtualClock& clock, Milliseconds deadline) : _clock(clock), _deadline(deadline) {}

    [[nodiscard]] bool await_ready() const { return false; }

    void await_suspend(std::coroutine_handle<> handle)
    {
        const Sleeper sleeper{_deadline, handle};
        const auto later = std::ranges::upper_bound(_clock._sleepers, _deadline, {}, &Sleeper::deadline);
        _clock._sleepers.insert(later, sleeper);
        if (_deadline <= _clock._now) {
            _clock._turn.start();
        }
    }

    void await_resume() const {}

private:
    VirtualClock& _clock;
    Milliseconds _deadline;
};

VirtualClock::VirtualClock()
{
    _turn.setSingleShot(true);
    _turn.setInterval(0);
    QObject::connect(&_turn, &QTimer::timeout, &_turn, [this] { advance(Milliseconds(0)); });
}

VirtualClock::~VirtualClock()
{
    for (const Sleeper& sleeper : std::exchange(_sleepers, {})) {
        sleeper.handle.resume();
    }
}

QCoro::Task<> VirtualClock::sleep(Milliseconds duration)
{
    _sleeps.append(duration);
    Nap nap(*this, _now + duration);
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

} // namespace ferrobank
