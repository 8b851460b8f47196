#include "serving/Mailbox.h"

#include "platform/Failure.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace ferrobank::drive {

Mailbox::Mailbox() : _wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!_wakeUp) {
        throw systemFailure("Cannot make an event descriptor", errno);
    }
}

void Mailbox::post(Change change)
{
    const std::lock_guard lock(_mutex);
    _changes.push_back(std::move(change));
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t put = ::write(_wakeUp.get(), &one, sizeof one);
}

void Mailbox::applyTo(State& state)
{
    std::vector<Change> changes;
    {
        const std::lock_guard lock(_mutex);
        std::uint64_t count = 0;
        [[maybe_unused]] const ssize_t got = ::read(_wakeUp.get(), &count, sizeof count);
        changes.swap(_changes);
    }
    for (const Change& change : changes) {
        change(state);
    }
}

} // namespace ferrobank::drive
