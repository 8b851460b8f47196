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

/// Makes `link` a symbolic link that stores exactly `target`, or makes the link that is there store it, at no
/// moment without one. Follows no link at the path itself, and replaces nothing but a link, whatever another
/// program does meanwhile. Free of Qt, because it also runs with administrator rights. Any thread.
///
/// Throws NotALinkError, or std::filesystem::filesystem_error with the system's reason.
void placeLink(const std::filesystem::path& target, const std::filesystem::path& link);

} // namespace ferrobank
