#pragma once

#include "commands/UninstallCommand.h"
#include "platform/Paths.h"

namespace ferrobank::drive {

/// Whether somebody sits at a terminal and can be asked: standard input and standard error both are one. The
/// application's call is never asked.
[[nodiscard]] bool isAtTerminal();

/// Before a deletion: says how many files and bytes will go and where their copy will be, and waits for
/// "yes". Throws Failure ("declined") at any other answer; nothing has been changed then.
void askBeforeDeletion(const Paths& paths, const UninstallWishes& wishes);

} // namespace ferrobank::drive
