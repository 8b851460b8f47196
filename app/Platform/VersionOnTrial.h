#pragma once

namespace ferrobank {

/// To be called first thing in application mode, before any library of the bundle is loaded. Where an update
/// was just installed it counts this start, and takes back a version that has failed to start too often. Does
/// not return when another version is to run: this process becomes that one, with the same arguments. Costs
/// one look-up of a file otherwise, and never fails: what cannot be read or written leaves this version
/// running.
void settleVersionToRun(char** arguments);

} // namespace ferrobank
