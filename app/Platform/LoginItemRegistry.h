#pragma once

#include <stdexcept>

namespace ferrobank {

/// What the per-user registry can start at login.
enum class LoginService {
    Agent,   ///< the background service that keeps the drive served, described by the bundle's property list
    MainApp, ///< the application itself, as the tray icon after login
};

/// State of one service. The numbers are part of the interface: a registry may report others, which read as
/// "unknown".
enum class LoginServiceStatus : int {
    NotRegistered = 0,
    Enabled = 1,
    RequiresApproval = 2, ///< registered, but switched off by the user
    NotFound = 3,         ///< the bundle does not carry what would be started
};

/// The registry's word while it cannot tell, because whoever keeps the service does not answer: not knowing
/// is not "not registered".
inline constexpr auto kNoAnswer = static_cast<LoginServiceStatus>(5);

/// Whether a registration may undo a switch that the user has turned off elsewhere.
enum class UserSwitch {
    Respect, ///< everything the program does by itself
    Override ///< only the user's own click on that very switch
};

/// A registry operation failed. what() is the sentence shown to the user.
class RegistryError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The system's per-user registry of things that start at login.
///
/// Owned by the composition of the program and outlives its users. Used on one thread at a time; a call may
/// take seconds. Every call asks the system anew, nothing is cached. Free of Qt, because the headless
/// commands run without it.
class LoginItemRegistry {
public:
    virtual ~LoginItemRegistry() = default;

    /// Never fails: what does not answer reads kNoAnswer, and NotFound where nothing could be started.
    [[nodiscard]] virtual LoginServiceStatus status(LoginService service) = 0;

    /// Makes the service start at login and, for the agent, starts it now. Repairs an entry that points to
    /// another place. Throws RegistryError; a service that the user switched off stays off under
    /// UserSwitch::Respect, and the call then fails while status() reads RequiresApproval.
    virtual void registerService(LoginService service, UserSwitch userSwitch) = 0;

    /// Stops the agent, and removes the entry of either service. Throws RegistryError.
    virtual void unregisterService(LoginService service) = 0;

    /// For the start of the application: registers the service again from here if it was registered from a
    /// bundle that is gone, because it was moved. Leaves the user's switches alone; never throws, the status
    /// tells.
    virtual void followMovedBundle(LoginService service) = 0;

    /// Shows the page on which the user switches both services on and off. Returns at once; has no result.
    /// Main thread.
    virtual void openSystemSettingsLoginItems() = 0;
};

} // namespace ferrobank
