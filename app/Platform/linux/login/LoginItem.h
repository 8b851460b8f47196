#pragma once

#include "Platform/LoginItemRegistry.h"
#include "Platform/linux/login/AutostartEntry.h"
#include "Platform/linux/login/EntryState.h"
#include "Platform/linux/login/UserFolders.h"

#include <filesystem>
#include <optional>

namespace ferrobank {

/// The application itself as an autostart entry. Lives for one operation, on the main thread.
///
/// Besides the two switches in the entry itself, the user may have masked the unit that the service manager
/// makes of it.
class LoginItem {
public:
    LoginItem(const UserFolders& folders, std::filesystem::path executable);

    [[nodiscard]] EntryState state() const;
    [[nodiscard]] std::optional<std::filesystem::path> registeredProgram() const;

    /// Both throw RegistryError; the first one does so, too, for a switch that it has to respect.
    void registerEntry(UserSwitch userSwitch);
    void unregisterEntry();

private:
    [[nodiscard]] bool isMasked() const;

    AutostartEntry _entry;
    std::filesystem::path _mask;
};

} // namespace ferrobank
