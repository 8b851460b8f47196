#pragma once

#include "figures/Pacing.h"

#include <cstdint>
#include <filesystem>
#include <stop_token>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// What reading everything brought to light. `unreadable` has display names of at most 100 files whose blocks
/// fail their checksums or cannot be read; `unreadableFiles` counts all of them.
struct ReadingResult {
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
    std::uint64_t unreadableFiles = 0;
    std::vector<std::string> unreadable;
    Seconds duration{};
    bool cancelled = false;
    /// Set when the drive could not be walked at all.
    std::string error;
};

/// Reads every file of the drive from the device, past the page cache, which makes the file system verify the
/// checksum of every block in use. Meant for idle time, once a week, on a thread with idle priority; uses at
/// most `processorShare` of a core. Files without permission to read are passed over; they are no damage.
[[nodiscard]] ReadingResult readAllFiles(const std::filesystem::path& root, double processorShare,
                                         const std::stop_token& stop);

} // namespace ferrobank::drive
