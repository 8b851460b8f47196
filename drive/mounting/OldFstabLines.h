#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// Former versions had one line a user in /etc/fstab (fstab(5)), between two comments that named the user:
///
///     # Ferrobank drive of user 1000: begin
///     /home/u/Library/Application\040Support/Ferrobank/store/drive.btrfs /home/u/Ferrobank btrfs loop,user,…
///     # Ferrobank drive of user 1000: end
///
/// mount(8) follows both paths as root, and both lie in folders of the user, who could so mount over any
/// folder and attach any file. Such lines are removed wherever they are met. Pure functions over the file's
/// text.
struct OldFstabLine {
    /// From the two comments right before and after it, when both are there and name the same user.
    std::optional<uid_t> user;
    /// Escapes undone.
    std::filesystem::path image;
};

/// A line is known by itself: image and mount point below the same home, under the names that only Ferrobank
/// uses, and the options that let a user mount it. What an administrator changed into something else is not
/// ours.
[[nodiscard]] std::vector<OldFstabLine> oldFstabLines(const std::string& text);

/// The text without the lines that `isMeant` picks, and without the comments of ours right beside them. Every
/// other byte stays, whatever comments are missing or left over.
[[nodiscard]] std::string withoutOldFstabLines(const std::string& text,
                                               const std::function<bool(const OldFstabLine&)>& isMeant);

} // namespace ferrobank::drive
