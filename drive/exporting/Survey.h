#pragma once

#include "exporting/Abilities.h"
#include "figures/Usage.h"

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>

namespace ferrobank::drive {

/// What an export will have to copy, counted before anything is changed.
struct ExportSize {
    /// Bytes to be copied: allocated ones, or apparent ones where the destination has no holes.
    std::uint64_t bytes = 0;
    std::uint64_t entries = 0;
    /// The sentence about the first file that the destination cannot hold.
    std::optional<std::string> unfit;
};

/// Walks the drive and compares every entry with the destination's abilities. Throws Failure when the drive
/// cannot be read.
[[nodiscard]] ExportSize surveyDrive(const std::filesystem::path& drive, const Abilities& abilities,
                                     const std::filesystem::path& shownDestination,
                                     const std::stop_token& stop);

/// Free bytes that a destination needs: the files, 4 KiB for each entry, and 2 % on top.
[[nodiscard]] std::uint64_t roomNeeded(std::uint64_t bytes, std::uint64_t entries);

/// Whether a name is safe where not every name is: valid UTF-8 on one line without the characters that FAT
/// reserves, ending in neither a full stop nor a space.
[[nodiscard]] bool isPlainName(const std::string& name);

} // namespace ferrobank::drive
