#pragma once

#include "Platform/linux/Descriptor.h"
#include "Platform/linux/updates/install/InstallPlace.h"

#include <chrono>

namespace ferrobank::updates {

/// A right that one process at a time holds. The staging folder is made when missing: mode 0700, owned by us,
/// no link. Ends with the object or with the process.
///
/// | right | to                                                   | held by |
/// |-------|------------------------------------------------------|------------------------------------------|
/// | Work  | change the staging folder and the installed version  | the worker, for a whole download | |
/// Trial | decide which of two versions is to run               | whoever does it, for a moment            |
///
/// They are two, so that a worker that hangs does not keep a version that fails from being taken back. Who
/// replaces the installed version holds both, Work first.
class StagingLock {
public:
    enum class Right { Work, Trial };

    /// Waits for another holder at most this long. Throws UpdateFailure: Busy, or Place when the folder is
    /// not ours.
    StagingLock(const InstallPlace& place, std::chrono::milliseconds patience, Right right = Right::Work);

private:
    Descriptor _file;
};

} // namespace ferrobank::updates
