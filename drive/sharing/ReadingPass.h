#pragma once

#include "figures/Pacing.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// How a reading pass goes about its work.
struct ReadingSettings {
    /// Root of the mounted drive.
    std::filesystem::path root;
    /// Folder on the computer's own disk that keeps how far a pass came that was ended early, so that the
    /// next one continues; empty for a pass that starts anew and leaves nothing.
    std::filesystem::path memory;
    /// Share of one core, averaged.
    double processorShare = 0.25;
    /// Called on the reading thread with the bytes that are done, at least once a file. May be empty.
    std::function<void(std::uint64_t done)> onProgress;
};

/// What reading everything brought to light. `files` and `bytes` count what this pass has read, `unreadable`
/// holds the paths below the root of at most 10,000 files whose blocks fail their checksums or cannot be
/// read, as the bytes that the file system has; `unreadableFiles` counts all of them.
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
/// checksum of every block in use. Files without permission to read are passed over; they are no damage. A
/// pass that continues another one finds the files again that this one could not read.
[[nodiscard]] ReadingResult readAllFiles(const ReadingSettings& settings, const std::stop_token& stop);

/// Whether one file of the drive can be read to its end, or is gone.
[[nodiscard]] bool isReadable(const std::filesystem::path& root, const std::string& file);

/// The list of unreadable files beside the store. Writing it throws Failure; a list that is not there is
/// empty.
void writeUnreadableList(const std::filesystem::path& list, const std::vector<std::string>& files);
[[nodiscard]] std::vector<std::string> readUnreadableList(const std::filesystem::path& list);

} // namespace ferrobank::drive
