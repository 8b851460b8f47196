#pragma once

#include <filesystem>
#include <string>

namespace ferrobank::drive {

/// The file that stands in the destination while an export is not complete and verified. An export into a
/// folder with this drive's mark goes on where the last one ended.
inline constexpr const char* kIncompleteMark = ".ferrobank-incomplete";

/// What the mark of an export of this drive holds.
[[nodiscard]] std::string incompleteMark(const std::string& driveUuid);

/// Whether the folder has this drive's mark. Whatever else lies there under the name, and however long it is,
/// is none: links are not followed, and no more is read than a mark holds.
[[nodiscard]] bool hasIncompleteMark(const std::filesystem::path& folder, const std::string& driveUuid);

} // namespace ferrobank::drive
