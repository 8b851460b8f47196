#pragma once

#include "Scenario.h"

namespace scripted {

/// A drive that only pretends: it stores nothing, but its state survives between runs, so that the whole
/// application can be tried against it. Everything is below the home folder.
class PretendDrive {
public:
    /// Keys of `settings` are described in README.md.
    explicit PretendDrive(nlohmann::json settings);

    /// Carries out one command of the drive tool; the result is the exit status.
    [[nodiscard]] int command(const Arguments& arguments);

private:
    [[nodiscard]] int status();
    [[nodiscard]] int check();
    [[nodiscard]] int serve();
    [[nodiscard]] int restart(bool keepMounted);
    [[nodiscard]] int uninstall(const Arguments& arguments);

    [[nodiscard]] bool isServing(const nlohmann::json& state) const;
    [[nodiscard]] bool isMounted(const nlohmann::json& state) const;
    [[nodiscard]] std::string attachError(const nlohmann::json& state) const;
    void attach(nlohmann::json& state) const;

    [[nodiscard]] nlohmann::json load() const;
    void save(const nlohmann::json& state) const;
    void note(const std::string& words) const;

    nlohmann::json _settings;
    std::filesystem::path _home;
    std::filesystem::path _support;
};

} // namespace scripted
