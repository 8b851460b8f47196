#pragma once

#include "Platform/LoginItemRegistry.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>
#include <optional>
#include <string>

namespace ferrobank {

/// A login-item registry in memory. Registering enables and unregistering removes, unless the test says
/// otherwise; every call but the status reads is recorded.
class FakeRegistry : public LoginItemRegistry {
public:
    struct Entry {
        LoginServiceStatus status = LoginServiceStatus::NotRegistered;
        int statusReads = 0;
        std::optional<std::string> registerError;
        std::optional<LoginServiceStatus> statusAfterRegister; ///< also after a failed one; else Enabled
        std::optional<std::string> unregisterError;
        std::optional<UserSwitch> lastSwitch; ///< how it was registered last
        bool moved = false;                   ///< registered from a bundle that is gone
    };

    Entry agent;
    Entry mainApp;

    /// For example "register agent", "unregister login item", "open settings".
    QStringList calls;

    /// The services that were followed to where the bundle is now, in order.
    QList<LoginService> followed;

    /// Called in the middle of every registration and removal, for a registry that takes its time.
    std::function<void()> meanwhile;

    [[nodiscard]] LoginServiceStatus status(LoginService service) override;
    void registerService(LoginService service, UserSwitch userSwitch) override;
    void unregisterService(LoginService service) override;
    void followMovedBundle(LoginService service) override;
    void openSystemSettingsLoginItems() override;

private:
    Entry& entry(LoginService service);
    void record(const QString& verb, LoginService service);
};

} // namespace ferrobank
