#pragma once

#include "Platform/LoginItemRegistry.h"

#include <string>
#include <string_view>

namespace ferrobank {

/// The operations on the two login services, over the system's registry: what the headless commands run and
/// what the model's login settings call. Main thread, synchronous; asks the registry anew each time.
class Service {
public:
    /// The agent's property list in the bundle; the application's identifier with this ending.
    static constexpr std::string_view kAgentPlistName = "org.ferrobank.Ferrobank.agent.plist";

    /// `registry` must outlive this object.
    explicit Service(LoginItemRegistry& registry);

    /// The registry of this system and of the running executable's bundle.
    static Service& shared();

    /// Registers the agent unless it is enabled. Returns normally when the registration only awaits the
    /// user's approval; throws the registry's error otherwise. Leaves the login item alone.
    void registerDrive();

    /// Unregisters the agent, then the login item; stops at the first failure and throws it. What is not
    /// registered is skipped.
    void unregister();

    /// Both services as one line of JSON without a line break: {"login_item":"…","agent":"…"}
    [[nodiscard]] std::string statusJSON() const;

    /// Whether either service waits for the user's approval.
    [[nodiscard]] bool needsApproval() const;

    /// Turns the login item on or off at the user's wish, without asking for its state first. Throws
    /// RegistryError.
    void setMenuOpensAtLogin(bool value);

    [[nodiscard]] LoginServiceStatus mainAppStatus() const;
    [[nodiscard]] LoginServiceStatus agentStatus() const;
    void openSystemSettingsLoginItems();

private:
    LoginItemRegistry& _registry;
};

/// The word of a status in the JSON line; "unknown" for a value outside the enumeration.
[[nodiscard]] std::string_view statusWord(LoginServiceStatus status);

} // namespace ferrobank
