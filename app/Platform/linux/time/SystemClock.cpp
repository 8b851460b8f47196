#include "Platform/linux/time/SystemClock.h"

#include <QtCore/QScopedPointer>
#include <QtCore/QTimer>

#include <memory>

namespace ferrobank {

namespace {

QCoro::Task<> sleepUntil(Latch over, std::chrono::milliseconds duration)
{
    // Deleted later, because this coroutine goes on inside the timer's own signal.
    const std::unique_ptr<QTimer, QScopedPointerDeleteLater> timer(new QTimer);
    timer->setTimerType(Qt::PreciseTimer);
    timer->setSingleShot(true);
    timer->callOnTimeout([over]() mutable { over.open(); });
    timer->start(duration);
    co_await over.wait();
}

} // namespace

SystemClock::~SystemClock()
{
    for (Latch& sleep : _sleeps) {
        sleep.open();
    }
}

QCoro::Task<> SystemClock::sleep(std::chrono::milliseconds duration)
{
    std::erase_if(_sleeps, [](const Latch& sleep) { return sleep.isOpen(); });
    _sleeps.emplace_back();
    return sleepUntil(_sleeps.back(), duration);
}

std::chrono::system_clock::time_point SystemClock::wallTime() const
{
    return std::chrono::system_clock::now();
}

} // namespace ferrobank
