#pragma once

#include <string_view>

/// Names under which both services stand in the user's folders. Changing one orphans what is registered.
namespace ferrobank {

inline constexpr std::string_view kAgentLabel = "org.ferrobank.Ferrobank.agent";
inline constexpr std::string_view kAgentUnit = "org.ferrobank.Ferrobank.agent.service";
inline constexpr std::string_view kAgentEntry = "org.ferrobank.Ferrobank.agent.desktop";
inline constexpr std::string_view kLoginItemEntry = "org.ferrobank.Ferrobank.desktop";
/// What the service manager makes of the entry.
inline constexpr std::string_view kLoginItemUnit = "app-org.ferrobank.Ferrobank@autostart.service";

} // namespace ferrobank
