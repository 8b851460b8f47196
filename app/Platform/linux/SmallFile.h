#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace ferrobank {

/// The content of a regular file of at most `limit` bytes; nothing if there is no such file or it cannot be
/// read. Never waits: a pipe or a device in its place is refused.
[[nodiscard]] std::optional<std::string> readSmallFile(const std::filesystem::path& file, std::size_t limit);

/// Writes to a temporary file beside it and renames, so that a reader finds the old content or the new.
/// Makes missing folders. Throws std::system_error and leaves the old content.
void replaceSmallFile(const std::filesystem::path& file, std::string_view content);

} // namespace ferrobank
