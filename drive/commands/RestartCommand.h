#pragma once

#include "platform/Log.h"
#include "platform/Paths.h"

namespace ferrobank::drive {

enum class KeepMounted { No, Yes };

/// `ferrobank restart`: returns when the drive is mounted; throws Failure when it is not within 30 seconds,
/// or when programs use it. With KeepMounted the serving process only takes up the program that is installed
/// now.
void restart(const Paths& paths, const Log& log, KeepMounted keepMounted);

/// Starts the serving process unless one runs, through the login service where there is one.
void ensureServing(const Paths& paths, const Log& log);

/// Waits until the drive is mounted. Throws Failure with what the serving process says, or after 30 seconds.
void waitUntilMounted(const Paths& paths);

} // namespace ferrobank::drive
