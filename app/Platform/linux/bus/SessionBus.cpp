#include "Platform/linux/bus/SessionBus.h"

#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <limits>

namespace ferrobank {

namespace {

constexpr uint64_t kCallTimeoutMicroseconds = 2'000'000;

std::chrono::milliseconds untilMonotonic(uint64_t microseconds)
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const auto present = std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
    const auto wait = std::chrono::microseconds(microseconds) - present;
    return std::chrono::ceil<std::chrono::milliseconds>(std::max(wait, decltype(wait)::zero()));
}

} // namespace

/// Turns readiness of the connection's socket, and its time-outs, into calls of sd_bus_process().
class SessionBus::Loop {
public:
    explicit Loop(sd_bus* bus)
        : _bus(bus),
          _readable(sd_bus_get_fd(bus), QSocketNotifier::Read),
          _writable(sd_bus_get_fd(bus), QSocketNotifier::Write)
    {
        _writable.setEnabled(false);
        _timer.setSingleShot(true);
        QObject::connect(&_readable, &QSocketNotifier::activated, &_readable, [this] { process(); });
        QObject::connect(&_writable, &QSocketNotifier::activated, &_writable, [this] { process(); });
        QObject::connect(&_timer, &QTimer::timeout, &_timer, [this] { process(); });
        arm();
    }

    void arm()
    {
        const int events = sd_bus_get_events(_bus);
        if (events < 0) {
            _readable.setEnabled(false);
            _writable.setEnabled(false);
            _timer.stop();
            return;
        }
        _writable.setEnabled((events & POLLOUT) != 0);
        uint64_t timeout = std::numeric_limits<uint64_t>::max();
        if (sd_bus_get_timeout(_bus, &timeout) < 0 || timeout == std::numeric_limits<uint64_t>::max()) {
            _timer.stop();
        } else {
            // 0 means that messages are waiting in the queue already.
            _timer.start(timeout == 0 ? std::chrono::milliseconds(0) : untilMonotonic(timeout));
        }
    }

private:
    void process()
    {
        while (sd_bus_process(_bus, nullptr) > 0) {
        }
        arm();
    }

    sd_bus* _bus;
    QSocketNotifier _readable;
    QSocketNotifier _writable;
    QTimer _timer;
};

std::unique_ptr<SessionBus> SessionBus::open()
{
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0) {
        return nullptr;
    }
    sd_bus_set_method_call_timeout(bus, kCallTimeoutMicroseconds);
    return std::unique_ptr<SessionBus>(new SessionBus(bus));
}

SessionBus::SessionBus(sd_bus* bus) : _bus(bus) {}

SessionBus::~SessionBus()
{
    _loop.reset();
    sd_bus_flush_close_unref(_bus);
}

void SessionBus::attach()
{
    if (!_loop) {
        _loop = std::make_unique<Loop>(_bus);
    }
}

void SessionBus::flushFromLoop()
{
    if (_loop) {
        _loop->arm();
    }
}

} // namespace ferrobank
