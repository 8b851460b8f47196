#pragma once

#include "Ferrobank/CLI/DriveStatus.h"
#include "Platform/MenuEntry.h"
#include "Platform/StatusItem.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

namespace ferrobank {

/// Everything that the menu depends on. Plain value.
struct MenuFacts {
    std::optional<DriveStatus> status; ///< absent until the first successful read
    bool setupComplete = false;
    bool commandInstalled = false;
    bool menuOpensAtLogin = false;

    friend bool operator==(const MenuFacts&, const MenuFacts&) = default;
};

/// The menu's entries from top to bottom; the numbers are the entries' ids.
enum class MenuItem : int {
    State = 1,
    Usage,
    StatusDivider,
    Open,
    SetUp,
    InstallCommand,
    CheckForUpdates,
    RunChecks,
    Divider,
    OpenAtLogin,
    ShowLog,
    Uninstall,
    Quit,
};

/// The menu for the facts, in the language of the program. Pure.
[[nodiscard]] QList<MenuEntry> menuContent(const MenuFacts& facts);

/// What the tray item says beside its icon for the same facts. Pure.
[[nodiscard]] StatusItemFace menuFace(const MenuFacts& facts);

/// The command of an entry for other programs, such as the actions of a desktop file: "open", "run-checks", …
/// No value for words that name no button.
[[nodiscard]] std::optional<MenuItem> menuItemFromAction(const QString& action);

} // namespace ferrobank
