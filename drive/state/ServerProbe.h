#pragma once

#include "platform/Paths.h"
#include "state/State.h"

#include <filesystem>
#include <optional>

namespace ferrobank::drive {

/// What a one-shot command can know of the serving process without talking to it.
struct ServerProbe {
    /// Somebody holds the store's lock.
    bool running = false;
    /// The runtime folder of that process, which may have another environment than the command.
    std::filesystem::path runtime;
    /// Its last written state; nothing while it has written none.
    std::optional<State> state;

    [[nodiscard]] static ServerProbe probe(const Paths& paths);

    [[nodiscard]] std::filesystem::path socket() const { return runtime / "control.sock"; }
};

} // namespace ferrobank::drive
