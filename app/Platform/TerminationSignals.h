#pragma once

#include <functional>
#include <memory>

namespace ferrobank {

/// Requests of the system or of a terminal that the program end: SIGTERM, SIGINT and SIGHUP on systems that
/// have them. One at a time in a process; what was set before is restored at the end.
class TerminationSignals {
public:
    virtual ~TerminationSignals() = default;

    /// `requested` is called from the event loop of the calling thread, at least once after a request. Child
    /// processes are started with the system's own handling.
    static std::unique_ptr<TerminationSignals> watch(std::function<void()> requested);
};

} // namespace ferrobank
