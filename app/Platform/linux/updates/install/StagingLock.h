#pragma once

#include "Platform/linux/Descriptor.h"
#include "Platform/linux/updates/install/InstallPlace.h"

#include <chrono>

namespace ferrobank::updates {

/// The right to change the staging folder and the installed version, held by one process at a time. The
/// folder is made when missing: mode 0700, owned by us, no link. Ends with the object or with the process.
class StagingLock {
public:
    /// Waits for another holder at most this long. Throws UpdateFailure: Busy, or Place when the folder is
    /// not ours.
    StagingLock(const InstallPlace& place, std::chrono::milliseconds patience);

private:
    Descriptor _file;
};

} // namespace ferrobank::updates
