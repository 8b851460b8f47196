#pragma once

#include <sys/types.h>

#include <filesystem>

namespace ferrobank::updates {

/// Whether a process that we can look at runs a program that lies below the folder, or is that program. One
/// process, for example the asking one, may be left out; 0 for none.
[[nodiscard]] bool isRunningFrom(const std::filesystem::path& folder, pid_t except = 0);

} // namespace ferrobank::updates
