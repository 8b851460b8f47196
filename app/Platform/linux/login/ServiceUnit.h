#pragma once

#include "Platform/linux/login/AgentDescription.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace ferrobank {

/// The text of the agent's systemd user unit. UTF-8, one value a line.
///
/// The service counts as started once its program runs: the drive tool need not announce that it is ready. It
/// is started again for ever, like a launch agent, and gets a minute to unmount when it is stopped.
/// Source of the format: systemd.syntax(7), systemd.service(5), "Command lines".
[[nodiscard]] std::string serviceUnitText(const AgentDescription& agent);

/// The program of a unit that serviceUnitText() wrote; nothing for a unit that others wrote.
[[nodiscard]] std::optional<std::filesystem::path> programOfServiceUnit(std::string_view text);

} // namespace ferrobank
