#pragma once

#include "platform/FileDescriptor.h"

namespace ferrobank::drive {

/// The space guard goes with the last process that has it open. Where the login service manager has started
/// this process, and its unit allows one descriptor, the manager keeps it open over a crash until the next
/// one is there. Without such a manager all of this does nothing.

/// Has the manager keep the guard's file, too.
void keepGuardOverCrash(int descriptor);

/// Has the manager let it go, and waits until it has: an open file keeps the drive from being unmounted.
void forgetKeptGuard();

/// What the manager kept for this process, at its start, once; empty without anything.
[[nodiscard]] FileDescriptor takeKeptGuard();

} // namespace ferrobank::drive
