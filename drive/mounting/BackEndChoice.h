#pragma once

#include "mounting/BackEnd.h"
#include "platform/Paths.h"

#include <memory>

namespace ferrobank::drive {

/// The back end for this user and system: direct for root, the mount helper where an administrator has
/// allowed it, udisks2 where it can be had; else one whose every attach fails with the advice what to
/// install. `storeLock` is the descriptor of the store's lock, which outlives the back end.
[[nodiscard]] std::unique_ptr<BackEnd> chooseBackEnd(const Paths& paths, int storeLock);

} // namespace ferrobank::drive
