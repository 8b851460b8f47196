#pragma once

#include <string_view>

namespace ferrobank::updates {

/// Whether a path from an archive stays below the folder it is unpacked into: relative, of plain names only
/// (no
/// "." or "..", none empty, none over 255 bytes), no NUL, at most 1024 bytes. Pure.
[[nodiscard]] bool isSafePath(std::string_view path);

/// Whether a link at `path` (itself safe) with this target points to something below the same folder. Pure.
[[nodiscard]] bool isSafeTarget(std::string_view path, std::string_view target);

} // namespace ferrobank::updates
