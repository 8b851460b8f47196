#pragma once

#include <string_view>

namespace ferrobank::updates {

/// Whether a path from an archive stays below the folder it is unpacked into: relative, of plain names only
/// (no "." or "..", none empty, none over 255 bytes), no NUL, at most 1024 bytes. Pure.
[[nodiscard]] bool isSafePath(std::string_view path);

/// Whether a link at `path` (itself safe) with this target points to something below the same folder,
/// whatever other links of that kind it leads over: ".." is allowed at its beginning only, where the folders
/// are real ones. Behind the name of another link it would count from where that one leads to. Pure.
[[nodiscard]] bool isSafeTarget(std::string_view path, std::string_view target);

} // namespace ferrobank::updates
