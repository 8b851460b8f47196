#pragma once

#include <QCoro/QCoroTask>

#include <functional>
#include <stdexcept>

namespace ferrobank {

/// Does work that may block for seconds away from the thread that wants it done, one piece after the other,
/// in the order in which the pieces were given. Main thread.
class WorkQueue {
public:
    /// The queue went away before the work was begun.
    class Dropped : public std::runtime_error {
    public:
        Dropped() : std::runtime_error("The work was dropped.") {}
    };

    virtual ~WorkQueue() = default;

    /// Ends on the main thread when the work is done, and throws what it threw. `work` runs on another
    /// thread: it must own what it uses, or be outlived by it. The order is that of the calls, not of the
    /// waits.
    ///
    /// The end of the queue waits for the piece at work and drops the others, whose tasks throw Dropped.
    virtual QCoro::Task<> run(std::function<void()> work) = 0;
};

} // namespace ferrobank
