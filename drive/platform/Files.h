#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace ferrobank::drive {

/// The whole text of a small file, or nothing when it cannot be read or is longer than `limit` bytes.
[[nodiscard]] std::optional<std::string> readSmallFile(const std::filesystem::path& path,
                                                       std::size_t limit = 1024 * 1024);

enum class Durability { Cached, Synced };

/// Puts `text` in place of the file in one step: a reader sees the old text or the new one, never a part. The
/// new file has mode 0600. Throws Failure; the old file is then still there. Synced: after a power cut it is
/// the new one, name included; where its folder cannot be synced the Failure comes after the replacement.
void replaceFile(const std::filesystem::path& path, std::string_view text,
                 Durability durability = Durability::Cached);

/// Makes a folder of mode 0700, with its parents, unless it is there. Throws Failure when it cannot be made,
/// is a link or no folder, or belongs to another user.
void ensurePrivateFolder(const std::filesystem::path& folder);

/// Removes a file or an empty folder; nothing there is fine. Throws Failure otherwise.
void removeIfPresent(const std::filesystem::path& path);

/// What identifies a program file on disk: another value at the same path means that it was replaced.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    /// Nanoseconds since the epoch.
    std::int64_t modified = 0;

    bool operator==(const FileIdentity&) const = default;
};

[[nodiscard]] std::optional<FileIdentity> identityOf(const std::filesystem::path& path);

} // namespace ferrobank::drive
