#pragma once

#include "figures/IdentitySet.h"
#include "figures/TreeWalk.h"
#include "figures/Usage.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// What one folder of the drive holds, everything below it included.
struct FolderFigures {
    /// Number of the folder that it lies in; the root's is its own, 0. A folder comes after the one it is in.
    std::uint32_t parent = 0;
    /// As the file system has it; the root's is empty.
    std::string name;
    /// What the files would take on a plain disk, each counted once though it may have several names.
    std::uint64_t holds = 0;
    /// What they take on the drive: a block that several files share counts for each of them by its part.
    std::uint64_t takes = 0;

    bool operator==(const FolderFigures&) const = default;
};

/// The folders of the drive as they were at one moment. Plain value.
struct FolderSums {
    std::vector<FolderFigures> folders;
    /// Change counter of the volume before the walk, and seconds since the epoch after it.
    std::uint64_t generation = 0;
    std::int64_t time = 0;

    bool operator==(const FolderSums&) const = default;

    /// The number of the folder at a path below the root, empty for the root itself.
    [[nodiscard]] std::optional<std::uint32_t> find(const std::filesystem::path& path) const;
    /// The numbers of the folders right in one.
    [[nodiscard]] std::vector<std::uint32_t> childrenOf(std::uint32_t folder) const;

    /// The last sums that were kept, if they are of this volume; `folder` is that of the scanner's indexes.
    [[nodiscard]] static std::optional<FolderSums> load(const std::filesystem::path& folder,
                                                        const std::string& uuid);
    /// Throws Failure.
    void keep(const std::filesystem::path& folder, const std::string& uuid) const;
};

/// Looks at every file of the mounted drive and asks where its blocks lie. How long a compressed block is on
/// the device is known to root alone; it counts up to where the next one begins. Of more than two million
/// stretches only those whose places are drawn by lot are looked at, and count for the others.
///
/// Needs some seconds for 200,000 files, `onFiles` is called now and then with their number so far. Nothing
/// when `stop` was requested. Throws Failure when the root cannot be read.
[[nodiscard]] std::optional<FolderSums> sumUpFolders(const std::filesystem::path& root,
                                                     const std::function<void(std::uint64_t)>& onFiles,
                                                     const std::stop_token& stop);

/// A stretch of the device that a file uses, for the sums.
struct UsedStretch {
    std::uint64_t start = 0;
    std::uint64_t length = 0;
    std::uint32_t folder = 0;
    /// Its length on the device is unknown, at most `length`.
    bool compressed = false;
};

/// Adds to `bytes[folder]` what each stretch takes by its part: where several overlap, each counts equally.
void addByParts(std::vector<UsedStretch> stretches, std::vector<double>& bytes);

} // namespace ferrobank::drive
