#pragma once

#include "platform/Paths.h"
#include "state/State.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace ferrobank::drive {

/// The text of the store's lock, `PROCESS START BOOT FOLDER`: the process that holds it and its runtime
/// folder. The number of a process is given to another one some time after its end, and after a restart of
/// the computer at once, so its start and the run of the system belong to it.
struct LockText {
    int process = 0;
    /// When the process was started, in the kernel's ticks since it runs; the same after `execve`.
    std::uint64_t start = 0;
    std::string bootId;
    std::filesystem::path runtime;

    /// For a process that is there now; of one that is not, nobody is alive.
    [[nodiscard]] static LockText of(int process, const std::filesystem::path& runtime);

    [[nodiscard]] std::string toText() const;
    [[nodiscard]] static std::optional<LockText> fromText(const std::string& text);

    /// False once the process has ended or was killed, also when another one has its number by now. It may
    /// still hold the lock then, until the last of its threads has left the kernel.
    [[nodiscard]] bool isAlive() const;
};

/// What a one-shot command can know of the serving process without talking to it.
struct ServerProbe {
    /// Somebody holds the store's lock, and is not a process that was killed a moment ago.
    bool running = false;
    /// That process, 0 when unknown.
    int process = 0;
    /// The runtime folder of that process, which may have another environment than the command.
    std::filesystem::path runtime;
    /// Its last written state; nothing while it has written none. One of an earlier process does not count.
    std::optional<State> state;

    [[nodiscard]] static ServerProbe probe(const Paths& paths);

    [[nodiscard]] std::filesystem::path socket() const { return runtime / "control.sock"; }
};

} // namespace ferrobank::drive
