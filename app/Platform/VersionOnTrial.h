#pragma once

namespace ferrobank {

/// To be called first thing in application mode, before any library of the bundle is loaded. Where an update
/// was just installed it takes back a version that has failed to start too often and does not run now. Does
/// not return when another version is to run: this process becomes that one, with the same arguments. Costs
/// one look-up of a file otherwise, and never fails: what cannot be read or written leaves this version
/// running.
void settleVersionToRun(char** arguments);

/// Counts this start if the installed version was just updated and has not shown yet that it works. To be
/// called when the start has become the running program and has found a display, or when the program's
/// library cannot be loaded: nothing else that ends a start says anything about the version. Never fails.
void countStartOnTrial();

} // namespace ferrobank
