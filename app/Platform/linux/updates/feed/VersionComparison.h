#pragma once

#include <string_view>

namespace ferrobank::updates {

/// The order of version texts, as the feed format defines it. Pure; never fails, whatever the bytes.
///
/// A text is read as numbers, strings and separators up to its first "-". The leading numbers are compared
/// after filling the shorter list with zeros ("1.0" equals "1.0.0"); then part by part: a number is newer
/// than a separator, a separator newer than the end of the text, and the end newer than a string ("1.0rc" is
/// older than "1.0"). Numbers may be of any length. Equal does not mean the same text.
///
/// Negative when `left` is older, positive when it is newer, 0 when they are equal.
[[nodiscard]] int compareVersions(std::string_view left, std::string_view right);

/// Whether a text may stand for a version of ours: 1 to 64 of the letters A to Z, digits and ". _ + -", the
/// first one a letter or digit. Folders are named after it and records keep it in a line, so nothing else
/// may. Pure.
[[nodiscard]] bool isUsableVersion(std::string_view text);

[[nodiscard]] inline bool isNewer(std::string_view left, std::string_view right)
{
    return compareVersions(left, right) > 0;
}

} // namespace ferrobank::updates
