#pragma once

#include <filesystem>

namespace ferrobank::drive {

/// The tool is two files in one folder: a small program under the name that everybody calls, which answers
/// what is asked every few seconds, and the one behind it that holds everything else.
inline constexpr const char* kFrontProgram = "ferrobank";
inline constexpr const char* kDriveProgram = "ferrobank-drive";

/// The second one of the tool that is reached at `front`, all links on the way followed; empty when there is
/// nothing at `front`. Whether it is there itself is left to the caller.
[[nodiscard]] std::filesystem::path driveProgramOf(const std::filesystem::path& front);

/// The real path of the running program; empty where it cannot be told.
[[nodiscard]] std::filesystem::path ownProgram();

} // namespace ferrobank::drive
