#pragma once

#include "Platform/LoginItemRegistry.h"

#include <functional>

namespace ferrobank {

/// The registry of Linux. (First form: knows no service yet.)
class LinuxLoginItemRegistry final : public LoginItemRegistry {
public:
    /// The registry of the running executable's bundle, which Service::shared() works on.
    static LinuxLoginItemRegistry& shared();

    LoginServiceStatus status(LoginService service) override;
    void registerService(LoginService service, UserSwitch userSwitch) override;
    void unregisterService(LoginService service) override;
    void openSystemSettingsLoginItems() override;

    /// What openSystemSettingsLoginItems() calls; nothing until it is set, as in the headless commands.
    void setLoginItemsPage(std::function<void()> open) { _openLoginItems = std::move(open); }

private:
    std::function<void()> _openLoginItems;
};

} // namespace ferrobank
