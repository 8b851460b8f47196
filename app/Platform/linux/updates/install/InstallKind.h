#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace ferrobank::updates {

/// How this copy came onto the machine, as the build wrote it into the bundle. The marker decides, not a
/// guess.
struct InstallKind {
    enum class Word {
        Folder,      ///< unpacked by the user: may replace itself where the place allows it
        Package,     ///< belongs to a package manager
        Store,       ///< Flatpak, Snap: the store updates it
        Development, ///< a build tree
        Unknown      ///< no marker, or one that cannot be read: never replaced
    };

    Word word = Word::Unknown;
    std::string advice; ///< how the user gets a new version, for example a command; may be empty
};

/// Contents/Resources/install-kind: the word in the first line, the advice in the second. Pure.
[[nodiscard]] InstallKind readInstallKind(std::string_view marker);

/// The kind of a bundle on this machine; a running store sandbox wins over the marker.
[[nodiscard]] InstallKind installKindOf(const std::filesystem::path& bundle);

} // namespace ferrobank::updates
