#pragma once

#include "sharing/ScanContext.h"

#include <stop_token>

namespace ferrobank::drive {

/// One pass over the drive that lets files of equal content, and equal stretches of large files, share their
/// blocks. It walks all files once and brings the figures along (`SharingResult::usage`). Runs for seconds to
/// hours on the calling thread, which should have idle priority; needs no privilege for files of the caller.
///
/// It opens people's files for reading only and never changes a content or a time; ended at any point, also
/// by a kill, it leaves whole files, and the next pass goes on with the hashes known so far. Nothing is
/// thrown: what stops the pass is in the result.
[[nodiscard]] SharingResult shareRepeatedData(const ScanSettings& settings, const std::stop_token& stop);

} // namespace ferrobank::drive
