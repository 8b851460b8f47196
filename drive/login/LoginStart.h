#pragma once

#include "platform/Log.h"
#include "platform/Paths.h"

#include <optional>
#include <string>

namespace ferrobank::drive {

/// What starts the drive at login: the unit `org.ferrobank.Ferrobank.agent.service` of the user's systemd
/// manager, or, where there is none, the autostart entry of the same name. Both are written by the
/// application; here they are read, started and taken away. Operations ask anew each time.
class LoginStart {
public:
    LoginStart(Paths paths, Log log);

    /// Whether the drive comes back at the next login.
    [[nodiscard]] bool isOn() const;
    /// Starts the unit when there is one that may be started; false when the caller has to start the process.
    [[nodiscard]] bool start() const;
    /// Stops the unit and waits until it is down, disables it and removes its file, or removes the autostart
    /// entry. What the user masked stays masked. Nothing there is fine.
    void takeAway() const;

    static constexpr const char* kUnit = "org.ferrobank.Ferrobank.agent.service";

private:
    Paths _paths;
    Log _log;
};

/// Whether the text of an autostart entry switches it off: Hidden=true or X-GNOME-Autostart-enabled=false.
[[nodiscard]] bool isSwitchedOff(const std::string& entry);

} // namespace ferrobank::drive
