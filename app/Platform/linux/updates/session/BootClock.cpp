#include "Platform/linux/updates/session/BootClock.h"

#include "Platform/linux/Descriptor.h"

#include <QtCore/QSocketNotifier>

#include <sys/timerfd.h>

#include <algorithm>
#include <memory>

namespace ferrobank::updates {
namespace {

struct DeleteLater {
    void operator()(QObject* object) const { object->deleteLater(); }
};

} // namespace

BootClock::~BootClock()
{
    // Those who sleep wake up and find their owners gone.
    const std::list<Latch> sleepers = std::move(_sleepers);
    for (Latch latch : sleepers)
        latch.open();
}

QCoro::Task<> BootClock::sleep(std::chrono::milliseconds duration)
{
    const Descriptor timer(::timerfd_create(CLOCK_BOOTTIME, TFD_CLOEXEC | TFD_NONBLOCK));
    const auto wanted = std::max(duration, std::chrono::milliseconds(1)); // zero would never ring
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(wanted);
    itimerspec setting{};
    setting.it_value.tv_sec = seconds.count();
    setting.it_value.tv_nsec = std::chrono::nanoseconds(wanted - seconds).count();
    if (!timer.isOpen() || ::timerfd_settime(timer.number(), 0, &setting, nullptr) != 0)
        qFatal("No timer can be made.");

    Latch latch;
    _sleepers.push_back(latch);
    // Not destroyed inside its own signal, which is where the sleeper is resumed.
    const std::unique_ptr<QSocketNotifier, DeleteLater> bell(
        new QSocketNotifier(timer.number(), QSocketNotifier::Read));
    QObject::connect(bell.get(), &QSocketNotifier::activated, bell.get(),
                     [this, latch, bell = bell.get()]() mutable {
                         bell->setEnabled(false);
                         _sleepers.remove_if([](const Latch& sleeper) { return sleeper.isOpen(); });
                         latch.open();
                     });
    co_await latch.wait();
}

} // namespace ferrobank::updates
