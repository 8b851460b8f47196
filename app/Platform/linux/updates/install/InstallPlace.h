#pragma once

#include "Platform/linux/updates/install/InstallKind.h"

#include <filesystem>
#include <optional>
#include <string>

namespace ferrobank::updates {

/// Where a bundle lies and how it can be replaced there. Plain value, free of Qt.
///
/// | layout    | root                             | replaced by                                       |
/// |-----------|----------------------------------|---------------------------------------------------|
/// | Exchange  | <home>/<name>                    | exchanging the two folders in one step            |
/// | Versioned | <home>/versions/<version>/<name> | a new folder and one renamed link, <home>/current |
///
/// Downloads and unpacked versions wait in <home>/.<name>-update, on the same file system.
struct InstallPlace {
    enum class Layout { Exchange, Versioned };

    std::filesystem::path root; ///< real path of the bundle's folder
    std::filesystem::path home;
    Layout layout = Layout::Exchange;

    [[nodiscard]] std::filesystem::path staging() const;

    /// The path of the installed bundle that stays the same over updates.
    [[nodiscard]] std::filesystem::path stableRoot() const;

    /// The folder that the bundle had before it was moved among versions (see SideBySide), where that is how
    /// it came there: its programs are links to those of the installed version.
    [[nodiscard]] std::optional<std::filesystem::path> formerRoot() const;

    /// The place of a bundle, from its real path, or from that of a folder it was moved away from.
    [[nodiscard]] static InstallPlace of(const std::filesystem::path& realRoot);
};

/// Whether the copy at a place may replace itself, and if not, the sentence that says why.
struct PlaceVerdict {
    bool mayReplace = false;
    InstallKind kind;
    std::string sentence; ///< UTF-8; empty when it may
};

/// Looks at the marker, the owner, the permissions and the file system. Writes nothing. `userHome` is the
/// user's home folder: the drive's own volume below it is never a place for updates.
[[nodiscard]] PlaceVerdict judgePlace(const InstallPlace& place, const std::filesystem::path& userHome);

} // namespace ferrobank::updates
