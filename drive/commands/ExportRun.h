#pragma once

#include "platform/Log.h"
#include "platform/Paths.h"

#include <filesystem>

namespace ferrobank::drive {

/// The export that goes before an uninstall: starts the drive if need be, copies, verifies, and keeps the
/// serving process from sharing meanwhile. Progress goes to the state file, every tenth to the log, and as a
/// bar to a terminal. Throws Failure unless every file is in the copy, also those written while it was made.
void exportBeforeUninstall(const Paths& paths, const Log& log, const std::filesystem::path& destination);

} // namespace ferrobank::drive
