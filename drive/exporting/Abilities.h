#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <limits>

namespace ferrobank::drive {

/// What the file system of an export's destination can hold, found out by trying.
struct Abilities {
    bool symbolicLinks = true;
    bool hardLinks = true;
    /// Permissions can be set. Where not, every file and folder gets the same ones.
    bool modes = true;
    mode_t fileMode = 0644;
    mode_t folderMode = 0755;
    /// Names may have any bytes. Where not, only names that every system can show are safe.
    bool anyName = true;
    bool attributes = true;
    bool holes = true;
    std::uint64_t largestFile = std::numeric_limits<std::uint64_t>::max();
};

/// Tries everything in a hidden folder inside `folder` and removes it again. Throws Failure when `folder`
/// cannot be written; `shown` is how the user named it.
[[nodiscard]] Abilities tryAbilities(const std::filesystem::path& folder, const std::filesystem::path& shown);

} // namespace ferrobank::drive
