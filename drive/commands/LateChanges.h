#pragma once

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>

namespace ferrobank::drive {

/// The first file on the drive that is newer than its verified copy, or has none: written after the copy's
/// snapshot was taken, it would be lost with the store. Compares names, kinds, sizes and, within the two
/// seconds to which some disks round, modification times. Nothing when the copy is up to date. Throws
/// Failure.
[[nodiscard]] std::optional<std::string> findLateChange(const std::filesystem::path& drive,
                                                        const std::filesystem::path& copy,
                                                        const std::stop_token& stop);

} // namespace ferrobank::drive
