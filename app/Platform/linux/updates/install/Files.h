#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <string_view>

namespace ferrobank::updates {

/// No record of an update is longer, in bytes.
inline constexpr std::size_t kLongestRecord = std::size_t{1024} * 1024;

/// Writes beside the file, forces it to the disk and renames: afterwards the file holds either the old or the
/// new text, also after a power failure. Mode 0600. The result is 0 or errno; nothing is left beside it on
/// failure.
[[nodiscard]] int writeFileAtomically(const std::filesystem::path& file, std::string_view text);

/// Writes over a file that is there and of exactly this length already, and forces it to the disk; takes no
/// room where file systems write in place. 0 or errno.
[[nodiscard]] int overwriteFile(const std::filesystem::path& file, std::string_view text);

/// Writes all of it; 0 or errno.
[[nodiscard]] int writeAll(int descriptor, std::span<const std::byte> bytes);

/// Forces a folder's entries to the disk; 0 or errno.
[[nodiscard]] int syncFolder(const std::filesystem::path& folder);

} // namespace ferrobank::updates
