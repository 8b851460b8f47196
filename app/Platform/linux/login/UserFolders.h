#pragma once

#include <filesystem>
#include <optional>

namespace ferrobank {

/// The user's own folders after the XDG Base Directory Specification. Plain value.
struct UserFolders {
    std::filesystem::path config; ///< $XDG_CONFIG_HOME, else ~/.config
    std::filesystem::path data;   ///< $XDG_DATA_HOME, else ~/.local/share

    /// From the environment, and from the account where that names no home folder; nothing if the account has
    /// none either.
    [[nodiscard]] static std::optional<UserFolders> ofProcess();

    [[nodiscard]] std::filesystem::path autostart() const { return config / "autostart"; }

    [[nodiscard]] std::filesystem::path userUnits() const { return data / "systemd/user"; }

    /// Where the user's own switches stand: the links of enabling and of masking.
    [[nodiscard]] std::filesystem::path unitSwitches() const { return config / "systemd/user"; }
};

} // namespace ferrobank
