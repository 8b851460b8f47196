#pragma once

#include "Platform/linux/updates/install/InstallPlace.h"

#include <sys/types.h>

#include <chrono>
#include <string>

namespace ferrobank::updates {

/// Waits for a process that need not be our child. True when it has ended (or never was), false when the time
/// is up. A pid of 0 or less counts as ended.
[[nodiscard]] bool waitForEnd(pid_t process, std::chrono::milliseconds limit);

/// Starts the installed application at its stable path, in a session of its own and without the library paths
/// of the old one, telling it which version it follows. Stays until the version on trial has reported healthy
/// or the user has ended it in an orderly way; a version that fails twice is taken back and the previous one
/// is started. Something is started in any case.
void relaunchAndWatch(const InstallPlace& place, const std::string& previous);

} // namespace ferrobank::updates
