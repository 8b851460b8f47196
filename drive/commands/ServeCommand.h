#pragma once

#include "platform/Log.h"
#include "platform/Paths.h"

#include <string>

namespace ferrobank::drive {

/// `ferrobank serve`: takes the locks and serves until told to end; the exit status. A second one ends at
/// once with 0 and a line in the log.
[[nodiscard]] int serve(const Paths& paths, const Log& log);

/// The real path of the tool, that is of the small program that starts this one, and the version of both.
[[nodiscard]] std::string ownPath();
[[nodiscard]] std::string ownVersion();

} // namespace ferrobank::drive
