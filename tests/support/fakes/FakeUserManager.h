#pragma once

#include "Platform/linux/login/UserManager.h"

#include <QtCore/QStringList>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ferrobank {

/// A user manager in memory, which looks for unit files in real folders. Every change is recorded.
class FakeUserManager : public UserManager {
public:
    ManagerReach reach = ManagerReach::Answers;
    std::vector<std::filesystem::path> folders; ///< in which unit files are looked for
    bool enabled = false;
    bool masked = false;
    std::optional<std::string> otherWord; ///< told instead of what the two switches and the folders say
    std::string failingCall;              ///< the recorded name of the call that fails
    Stop stopResult = Stop::Done;

    /// For example "enable", "reload".
    QStringList calls;

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
    void record(const char* call);
};

} // namespace ferrobank
