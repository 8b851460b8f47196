#include "Platform/linux/files/Elsewhere.h"

#include "Platform/Latch.h"
#include "Platform/linux/Descriptor.h"

#include <QtCore/QScopedPointer>
#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <exception>
#include <system_error>
#include <thread>

namespace ferrobank {

/// Shared by the thread that works and the one that waits.
struct Elsewhere::Errand {
    Descriptor ended{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    std::atomic<bool> done = false;
    std::atomic<bool> succeeded = false;
};

QCoro::Task<bool> Elsewhere::run(std::shared_ptr<Errands> givenUp, QString key, std::function<void()> work,
                                 std::chrono::milliseconds limit)
{
    if (const auto former = givenUp->value(key)) {
        if (!former->done) {
            co_return false;
        }
        givenUp->remove(key);
    }
    const auto errand = std::make_shared<Errand>();
    if (!errand->ended.isOpen()) {
        co_return false; // no more descriptors
    }
    try {
        std::thread([errand, work] {
            try {
                work();
                errand->succeeded = true;
            } catch (const std::exception&) {
                errand->succeeded = false;
            }
            errand->done = true;
            const std::uint64_t one = 1;
            static_cast<void>(::write(errand->ended.number(), &one, sizeof one));
        }).detach();
    } catch (const std::system_error&) {
        co_return false; // no more threads
    }

    // Deleted later, because this coroutine goes on inside their own signals.
    Latch over;
    const auto open = [over]() mutable { over.open(); };
    const std::unique_ptr<QSocketNotifier, QScopedPointerDeleteLater> notifier(
        new QSocketNotifier(errand->ended.number(), QSocketNotifier::Read));
    const std::unique_ptr<QTimer, QScopedPointerDeleteLater> timer(new QTimer);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), open);
    timer->setSingleShot(true);
    timer->callOnTimeout(open);
    timer->start(limit);
    co_await over.wait();

    notifier->setEnabled(false);
    timer->stop();
    if (!errand->done) {
        givenUp->insert(key, errand);
    }
    co_return errand->done && errand->succeeded;
}

} // namespace ferrobank
