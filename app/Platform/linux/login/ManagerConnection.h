#pragma once

#include "Platform/linux/bus/BusReference.h"

#include <chrono>
#include <string>

namespace ferrobank {

/// One connection to the user's service manager: over the session bus or, where there is no bus, to the
/// manager's own socket, which costs the manager more. Lives for one operation: on its own socket the manager
/// tells everything that happens, and what is not read piles up there. Main thread; every wait is limited.
///
/// Source: systemd(1), "/run/user/UID/systemd/private"; org.freedesktop.systemd1(5).
class ManagerConnection {
public:
    /// What a call came back with: a reply, or why there is none.
    struct Outcome {
        BusMessage reply;
        int error = 0; ///< errno value, 0 with a reply
        std::string errorName;
        std::string errorText;
    };

    /// Connects and waits for the greeting up to `limit`.
    explicit ManagerConnection(std::chrono::microseconds limit);

    /// 0, or the errno value for which there is no connection; ETIMEDOUT: somebody is there and silent.
    [[nodiscard]] int error() const { return _error; }

    /// A call of the manager's object. Whoever is not there is not started by it.
    [[nodiscard]] BusMessage newCall(const char* interface, const char* member);
    [[nodiscard]] Outcome call(const BusMessage& message, std::chrono::microseconds limit);

private:
    int open();
    int awaitGreeting(std::chrono::microseconds limit);

    DroppedBus _bus;
    int _error = 0;
};

} // namespace ferrobank
