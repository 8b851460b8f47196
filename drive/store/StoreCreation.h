#pragma once

#include "platform/Log.h"
#include "platform/Paths.h"

#include <cstdint>

namespace ferrobank::drive {

/// Makes the sparse image of a new drive: as long as its disk (see `storeLength`), or half of that and so on
/// where the host's file system allows no longer file. It is built under another name and renamed when whole,
/// so a kill at any moment leaves either no image or a sound one. Afterwards `Paths::unprepared` is there:
/// the first attach has to make the `files` subvolume. Throws Failure; nothing is left behind then.
void createStore(const Paths& paths, const Log& log);

/// Free bytes that the host must have before a drive is made.
constexpr std::uint64_t kRoomForNewStore = 256ULL * 1024 * 1024;

} // namespace ferrobank::drive
