#pragma once

#include "platform/Paths.h"

namespace ferrobank::drive {

// What `ferrobank share` asks of the serving process. All throw Failure: without a mounted drive, while an
// export is at work, or when the pass itself failed.

/// Begins a pass at once and waits for its end, with a bar on a terminal; says what it has shared. Whoever
/// interrupts it leaves the pass at work.
void shareNow(const Paths& paths);

/// No pass begins any more, also after a restart of the computer.
void pauseSharing(const Paths& paths);
void resumeSharing(const Paths& paths);

} // namespace ferrobank::drive
