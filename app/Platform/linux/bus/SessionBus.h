#pragma once

#include "Platform/linux/bus/BusReference.h"

#include <memory>

namespace ferrobank {

/// The user's session bus, one connection for the life of the program. Main thread.
///
/// Usable before there is an event loop or any window system: calls may be made at once, and what others send
/// is kept until attach(). Once the connection is lost everything on it fails and nothing is tried again: a
/// session bus does not come back.
class SessionBus {
public:
    /// No value when there is no session bus to reach.
    static std::unique_ptr<SessionBus> open();

    ~SessionBus();
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    [[nodiscard]] sd_bus* get() const { return _bus; }

    /// Serves the connection from the event loop of the calling thread, which must exist.
    void attach();

    /// To be called after anything was sent outside a handler: what the socket would not take yet is sent
    /// from the event loop.
    void flushFromLoop();

private:
    class Loop;

    explicit SessionBus(sd_bus* bus);

    sd_bus* _bus;
    std::unique_ptr<Loop> _loop;
};

} // namespace ferrobank
