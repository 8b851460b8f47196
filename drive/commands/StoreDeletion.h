#pragma once

#include "platform/Log.h"
#include "platform/Paths.h"
#include "store/Superblock.h"

#include <optional>

namespace ferrobank::drive {

/// Deletes the drive's data for good; a file that somebody else put beside it stays. Nobody may have the
/// drive attached. With `compared`, what the image said of itself when its copy was compared, an image that
/// says something else by now is not deleted: it was written in between. Throws Failure before the first
/// removal. Repeating it after a kill removes the rest.
void deleteStore(const Paths& paths, const Log& log, const std::optional<Superblock>& compared);

} // namespace ferrobank::drive
