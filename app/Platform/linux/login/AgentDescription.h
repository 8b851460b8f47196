#pragma once

#include "Platform/Bundle.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ferrobank {

/// A program with its arguments, without the program's own name.
struct CommandLine {
    std::filesystem::path program; ///< absolute
    std::vector<std::string> arguments;

    bool operator==(const CommandLine&) const = default;
};

enum class KeepAlive {
    Never,
    AfterFailure, ///< started again unless it ended well
    Always,
};

/// What the agent's property list in the bundle says about the agent. Plain value.
///
/// Source of the format: the keys Label, BundleProgram, ProgramArguments, RunAtLoad and KeepAlive of a macOS
/// launch agent. BundleProgram is relative to the bundle; the first of the ProgramArguments is the name that
/// the program sees as its own, and is left out here.
struct AgentDescription {
    CommandLine command;
    KeepAlive keepAlive = KeepAlive::Never;
};

/// Nothing if the property list is missing, is not one, names another agent, leads out of the bundle, or
/// describes nothing to start at login.
[[nodiscard]] std::optional<AgentDescription> readAgentDescription(const Bundle& bundle);

/// The same from the property list's bytes; `root` is the bundle's folder.
[[nodiscard]] std::optional<AgentDescription> parseAgentDescription(std::string_view bytes,
                                                                    const std::filesystem::path& root);

} // namespace ferrobank
