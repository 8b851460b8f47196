#pragma once

#include "Platform/linux/login/AgentDescription.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace ferrobank {

/// What an autostart entry of the desktop says. Plain value.
///
/// Source of the format: freedesktop.org Desktop Entry Specification (escapes of values, "The Exec key") and
/// Desktop Application Autostart Specification; the second switch is the one of GNOME and older tools.
struct DesktopEntry {
    std::optional<std::filesystem::path> program; ///< what Exec starts, however it is quoted
    bool switchedOff = false;                     ///< Hidden=true or X-GNOME-Autostart-enabled=false
};

/// What the entry stands for in the desktop's lists.
struct EntryTitle {
    std::string_view name;    ///< without escapes, and not empty
    std::string_view comment; ///< likewise
};

[[nodiscard]] std::string desktopEntryText(const EntryTitle& title, const CommandLine& command);

[[nodiscard]] DesktopEntry parseDesktopEntry(std::string_view text);

} // namespace ferrobank
