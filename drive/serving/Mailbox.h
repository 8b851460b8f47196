#pragma once

#include "platform/FileDescriptor.h"
#include "state/State.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

namespace ferrobank::drive {

/// Carries changes of the state from the worker threads to the serving loop: any thread posts, the loop sees
/// `wakeUp()` become readable and applies them in order.
class Mailbox {
public:
    using Change = std::function<void(State&)>;

    Mailbox();

    void post(Change change);
    /// Only from the serving loop.
    void applyTo(State& state);

    [[nodiscard]] int wakeUp() const { return _wakeUp.get(); }

private:
    FileDescriptor _wakeUp;
    std::mutex _mutex;
    std::vector<Change> _changes;
};

} // namespace ferrobank::drive
