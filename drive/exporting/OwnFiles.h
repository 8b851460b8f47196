#pragma once

#include "figures/TreeWalk.h"

namespace ferrobank::drive {

/// Whether a file in the root of the drive is part of the drive's own dress rather than the user's: the
/// volume's icon that the application puts there, and the two files that point file managers to it. Files of
/// these names that say something else are the user's.
[[nodiscard]] bool isOwnIcon(const WalkedEntry& entry);

} // namespace ferrobank::drive
