#pragma once

#include "Platform/LoginItemRegistry.h"
#include "Platform/linux/login/AgentDescription.h"
#include "Platform/linux/login/AutostartEntry.h"
#include "Platform/linux/login/DetachedAgent.h"
#include "Platform/linux/login/EntryState.h"
#include "Platform/linux/login/UserFolders.h"
#include "Platform/linux/login/UserManager.h"

#include <filesystem>
#include <optional>
#include <string>

namespace ferrobank {

/// The agent in the user's session: a unit of the service manager or, where no manager reads this user's
/// folders, an autostart entry and a detached process. Lives for one operation, on the main thread.
///
/// | the manager says of our unit file       | state                 |
/// |-----------------------------------------|-----------------------|
/// | enabled                                 | On                    |
/// | enabled, but for another place; broken  | Elsewhere             |
/// | masked, also without a file of ours     | SwitchedOff           |
/// | disabled and everything else            | SwitchedOff           |
///
/// An autostart entry that is left from a session without a manager reads as Elsewhere beside one: the next
/// registration replaces it by the unit.
class AgentService {
public:
    AgentService(UserManager& manager, const UserFolders& folders, const AgentDescription& description);

    /// Never fails. Without a manager it is what the autostart entry says; a silent one leaves it unanswered.
    [[nodiscard]] EntryState state();

    /// The program that is registered, wherever it lies.
    [[nodiscard]] std::optional<std::filesystem::path> registeredProgram() const;

    /// Throws RegistryError; a new registration is then undone, and an old one left as it was.
    void registerAgent(UserSwitch userSwitch);

    /// Throws RegistryError.
    void unregisterAgent();

private:
    struct UnitFile {
        EntryState state =
            EntryState::Absent; ///< Absent, Foreign, Elsewhere or On; the switch is the manager's
        std::optional<std::filesystem::path> program;
        std::string text;
    };

    [[nodiscard]] UnitFile findUnitFile() const;
    [[nodiscard]] EntryState unitState(const std::string& word) const;
    /// Whether the manager that answered looks into this user's folder: one of another home does not.
    [[nodiscard]] bool managerReadsOurFolder();
    [[nodiscard]] bool usableManager();

    void registerUnit(UserSwitch userSwitch);
    void refuseForeignUnits();
    void writeUnit(const UnitFile& before);
    void undoUnit(const UnitFile& before);
    void unregisterUnit();

    void registerEntry(UserSwitch userSwitch);
    void removeEntry();

    UserManager& _manager;
    UserFolders _folders;
    AgentDescription _description;
    std::filesystem::path _unitFile;
    AutostartEntry _entry;
};

} // namespace ferrobank
