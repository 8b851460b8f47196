#pragma once

#include "Platform/LoginItemRegistry.h"
#include "Platform/linux/login/AgentDescription.h"
#include "Platform/linux/login/DesktopEntry.h"
#include "Platform/linux/login/EntryState.h"

#include <filesystem>
#include <optional>
#include <string_view>

namespace ferrobank {

/// One of our entries in the user's autostart folder. Main thread; keeps nothing between two calls.
///
/// An entry is ours if the program that it starts has our program's file name, wherever that lies. An entry
/// that starts nothing and is switched off is the user's switch, as some desktops leave it.
class AutostartEntry {
public:
    AutostartEntry(std::filesystem::path file, EntryTitle title, CommandLine command);

    [[nodiscard]] EntryState state() const;

    /// The program of an entry that is ours, wherever it lies.
    [[nodiscard]] std::optional<std::filesystem::path> registeredProgram() const;

    /// Writes the entry, switched on, in place of an older one. Throws RegistryError if it cannot be written,
    /// if the file there is foreign, or if the user switched it off and `userSwitch` respects that.
    void write(UserSwitch userSwitch);

    /// Removes the entry if it is ours. Throws RegistryError.
    void remove();

private:
    struct Found {
        EntryState state = EntryState::Absent;
        std::optional<std::filesystem::path> program;
    };

    [[nodiscard]] Found find() const;

    std::filesystem::path _file;
    EntryTitle _title;
    CommandLine _command;
};

} // namespace ferrobank
