#pragma once

#include "Platform/linux/updates/install/InstallPlace.h"

#include <filesystem>
#include <string>

namespace ferrobank::updates {

// How a bundle in one folder comes to lie among versions side by side, where two folders cannot be exchanged:
//
//   <home>/<name>/Contents/Linux/Ferrobank, Helpers/ferrobank    links to the same below `current`
//   <home>/.<name>-versions/versions/<version>/<name>            the bundle
//   <home>/.<name>-versions/current                              link to the installed version
//
// The path that everything outside knows stays what it was. A folder cannot become a link in one step, but a
// file can; so the two programs that are started from outside become links, one after the other, and both
// lead to the very version that was there: no moment has none, or two different ones.

/// The place of the installed version after the move. Killed between any two of its steps, the bundle works
/// and the move can be begun anew. `version` is the installed one. Needs the StagingLock of the old place.
/// Throws UpdateFailure (Install, Space).
[[nodiscard]] InstallPlace moveSideBySide(const InstallPlace& place, const std::string& version);

/// Once nothing runs from the folder that the bundle had before, the files in it that no link stands for are
/// replaced by links or removed. Does nothing elsewhere; what fails is tried again the next time.
void tidyFormerFolder(const InstallPlace& place);

} // namespace ferrobank::updates
