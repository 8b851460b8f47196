#pragma once

#include "Platform/Bundle.h"
#include "Platform/LoginItemRegistry.h"
#include "Platform/linux/login/UserFolders.h"
#include "Platform/linux/login/UserManager.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace ferrobank {

/// The registry of a Linux session: the agent as a unit of the systemd user manager (or, without one, as an
/// autostart entry and a process), the application as an autostart entry of the desktop.
///
/// | status           | agent                              | application                            |
/// |------------------|------------------------------------|----------------------------------------|
/// | Enabled          | our unit is enabled                | our entry is there                     |
/// | NotRegistered    | no unit of ours                    | no entry of ours                       |
/// | RequiresApproval | our unit is disabled, or masked    | our entry is switched off              |
/// | NotFound         | no property list, or no program    | no executable                          |
/// | another number   | registered from another place      | registered from another place          |
/// | kNoAnswer        | the service manager is silent      | -                                      |
class LinuxLoginItemRegistry final : public LoginItemRegistry {
public:
    /// Without folders (an account without a home) nothing is registered, and nothing can be.
    LinuxLoginItemRegistry(Bundle bundle, std::optional<UserFolders> folders,
                           std::unique_ptr<UserManager> manager);

    /// The registry of the running executable's bundle and of this session; Service::shared() works on it.
    static LinuxLoginItemRegistry& shared();

    [[nodiscard]] LoginServiceStatus status(LoginService service) override;
    void registerService(LoginService service, UserSwitch userSwitch) override;
    void unregisterService(LoginService service) override;
    void followMovedBundle(LoginService service) override;
    void openSystemSettingsLoginItems() override;

    /// What openSystemSettingsLoginItems() calls: no desktop has such a page, so the application brings its
    /// own. Nothing until it is set, as in the headless commands.
    void setLoginItemsPage(std::function<void()> open);

private:
    [[nodiscard]] std::optional<std::filesystem::path> registeredProgram(LoginService service);
    [[nodiscard]] const UserFolders& requireFolders() const;

    Bundle _bundle;
    std::optional<UserFolders> _folders;
    std::unique_ptr<UserManager> _manager;
    std::function<void()> _openLoginItemsPage;
};

} // namespace ferrobank
