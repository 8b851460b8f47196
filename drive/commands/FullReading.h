#pragma once

#include "mounting/Volume.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "sharing/ReadingPass.h"
#include "state/ServerProbe.h"

#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// Called on the reading thread, at most some times a second.
using ReadingProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

/// Reads every file of the drive at full speed, keeps the list of those that cannot be read, and tells the
/// serving process. A reading that was stopped changes nothing that is known. Throws Failure when the drive
/// cannot be walked.
[[nodiscard]] ReadingResult readEverything(const Paths& paths, const Log& log, const ServerProbe& server,
                                           const Volume& volume, const ReadingProgress& progress,
                                           const std::stop_token& stop);

/// What somebody has settled with `ferrobank check --acknowledge`.
struct Acknowledgement {
    /// Sentences on what is settled now.
    std::vector<std::string> settled;
    /// Files, ready for display, that still cannot be read.
    std::vector<std::string> unreadable;
};

/// Looks again at the files that could not be read, and takes the store that is there for the one that is
/// meant. Throws Failure when the drive is not served.
[[nodiscard]] Acknowledgement acknowledge(const Paths& paths);

} // namespace ferrobank::drive
