#pragma once

#include "Platform/linux/login/AgentDescription.h"

#include <chrono>

namespace ferrobank {

/// The agent as a plain process of the user, for a session without a service manager. It leads a session of
/// its own, outlives this program and is nobody's child here. Nothing starts it again.
///
/// A process is taken for the agent if it is ours, runs the command's program and has exactly its arguments,
/// whoever started it. Main thread.
class DetachedAgent {
public:
    explicit DetachedAgent(CommandLine command);

    [[nodiscard]] bool runs() const;

    /// Starts the program unless it runs. Its input and output are the null device. Throws RegistryError if
    /// it cannot be started.
    void start();

    /// Asks every such process to end and waits for that up to `limit`. Throws RegistryError if one is left:
    /// it may still be writing to the drive, so nothing is ended by force.
    void stop(std::chrono::milliseconds limit);

private:
    CommandLine _command;
};

} // namespace ferrobank
