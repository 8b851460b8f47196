#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>

namespace ferrobank {

/// Something that is no symbolic link is where the link should go. It was left as it is.
class NotALinkError : public std::runtime_error {
public:
    NotALinkError() : std::runtime_error("already exists and is not a link") {}
};

/// The text stored in the link, unresolved. No value when there is no link at the path. Any thread.
[[nodiscard]] std::optional<std::filesystem::path> storedLinkText(const std::filesystem::path& link);

/// Whether nobody but the administrator can change what is at the path, now or later: it and every folder
/// above it belong to root, are no links, and are written by nobody else. False for what is not there.
[[nodiscard]] bool isOnlyRootsToWrite(const std::filesystem::path& path);

/// The same for a folder that may be reached by links of the administrator's making, and for what leads to
/// it. Some distributions let the group "staff" write below /usr/local; who is in it counts as administrator.
[[nodiscard]] bool isOnlyRootsToPlaceIn(const std::filesystem::path& folder);

/// Makes `link` a symbolic link that stores exactly `target`, or makes the link that is there store it, at no
/// moment without one. Follows no link at the path itself, and replaces nothing but a link, whatever another
/// program does meanwhile. Free of Qt, because it also runs with administrator rights. Any thread.
///
/// Throws NotALinkError, or std::filesystem::filesystem_error with the system's reason.
void placeLink(const std::filesystem::path& target, const std::filesystem::path& link);

} // namespace ferrobank
