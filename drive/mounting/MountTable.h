#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace ferrobank::drive {

/// One line of /proc/self/mountinfo (proc(5)), escapes undone.
struct MountEntry {
    /// The mounted part of the file system: for Btrfs the path of the subvolume.
    std::string root;
    std::string mountPoint;
    std::string fileSystem;
    std::string source;
    bool readOnly = false;
};

/// The mounts as this process sees them, in the kernel's order: of two on one folder the later covers the
/// earlier. Lines that do not parse are left out.
[[nodiscard]] std::vector<MountEntry> parseMountTable(std::string_view text);
/// Those of this process now. Throws Failure where they cannot be read, which is never "none".
[[nodiscard]] std::vector<MountEntry> readMountTable();

/// Undoes what mount tables and fstab(5) do to space, tab, line break, backslash and so on: `\040`.
[[nodiscard]] std::string withoutEscapes(std::string_view text);

} // namespace ferrobank::drive
