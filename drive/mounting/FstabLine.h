#pragma once

#include "platform/Paths.h"

#include <sys/types.h>

#include <string>

namespace ferrobank::drive {

/// The drive's one line in /etc/fstab (fstab(5)) and its place there, between two comments that name the
/// user. Pure functions over the file's text.

/// The line itself. `user` brings noexec with it, which `exec` after it takes back.
[[nodiscard]] std::string fstabLine(const Paths& paths);

/// The text with the user's line in it, exactly once, at the end; everything else stays as it was.
[[nodiscard]] std::string withFstabLine(const std::string& text, uid_t user, const std::string& line);
[[nodiscard]] std::string withoutFstabLine(const std::string& text, uid_t user);

/// Whether the text has exactly this line.
[[nodiscard]] bool holdsFstabLine(const std::string& text, const std::string& line);

} // namespace ferrobank::drive
