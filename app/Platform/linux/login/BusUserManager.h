#pragma once

#include "Platform/linux/login/ManagerConnection.h"
#include "Platform/linux/login/UserManager.h"

#include <string>
#include <vector>

namespace ferrobank {

/// The systemd user manager, asked with libsystemd. Connects anew for every operation.
///
/// Source of the calls: org.freedesktop.systemd1(5).
class BusUserManager final : public UserManager {
public:
    [[nodiscard]] UnitFileState unitFileState(const std::string& unit) override;
    [[nodiscard]] std::vector<std::filesystem::path> unitPath() override;
    void enable(const std::string& unit) override;
    void disable(const std::string& unit) override;
    void unmask(const std::string& unit) override;
    void reload() override;
    void start(const std::string& unit) override;
    Stop stop(const std::string& unit, std::chrono::milliseconds limit) override;
    void resetFailed(const std::string& unit) override;

private:
    /// A connection to change something over; throws RegistryError if there is none.
    [[nodiscard]] static ManagerConnection requireConnection();
};

} // namespace ferrobank
