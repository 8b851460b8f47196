#pragma once

#include "platform/Paths.h"
#include "sharing/FolderSums.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace ferrobank::drive {

enum class UsageForm { Text, Json };

/// `ferrobank du`: prints what the folders right in `folder` hold, take and save; an empty path is the whole
/// drive. The sums are kept beside the scanner's indexes, and used again while the drive is unchanged or
/// they are less than a minute old. Throws Failure when the drive is not mounted or `folder` is not on it.
void showFolderUsage(const Paths& paths, const std::filesystem::path& folder, UsageForm form);

/// The table for people: one row a folder, those that take most first, and a last one for all of it.
/// `title` names the folder.
[[nodiscard]] std::string folderTable(const FolderSums& sums, std::uint32_t folder, const std::string& title);

} // namespace ferrobank::drive
