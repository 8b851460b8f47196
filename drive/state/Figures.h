#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// The last known figures of the drive in `store/figures.json`, so that the first status after a login has
/// some. Its being there also tells that this store has held a drive: an image that is gone is then never
/// replaced by a new one. Written by the serving process.
struct Figures {
    std::string uuid;
    std::optional<std::uint64_t> volumeUsed;
    std::optional<std::uint64_t> saved;
    std::uint64_t walkGeneration = 0;
    /// Allocated bytes of the guard file.
    std::uint64_t guard = 0;
    /// Seconds since the epoch at which this drive was first served.
    std::int64_t since = 0;
    /// Seconds since the epoch of the last complete reading pass, and of the last sharing pass.
    std::int64_t lastReading = 0;
    std::int64_t lastSharing = 0;
    /// Of the last reading pass: how many files could not be read, and the first three for display.
    std::uint64_t unreadableFiles = 0;
    std::vector<std::string> unreadable;
    /// Change counter of the volume when this was written; an image that is further back than the commit
    /// before it is an older one.
    std::uint64_t generation = 0;
    bool sharingPaused = false;
    /// As in IntegrityState.
    std::uint64_t settledErrors = 0;
    bool olderImage = false;

    bool operator==(const Figures&) const = default;

    /// Nothing when the file is missing or damaged.
    [[nodiscard]] static std::optional<Figures> read(const std::filesystem::path& file);
    /// Throws Failure.
    void write(const std::filesystem::path& file) const;
};

} // namespace ferrobank::drive
