#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <stop_token>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// Frozen pictures of the drive inside its own `.ferrobank` folder, so that running programs do not disturb a
/// copy. One for the drive and one for each subvolume that somebody made on it, because a snapshot leaves
/// those out. Removed with the object; what could not be removed is found again by
/// `removeLeftoverSnapshots`.
class DriveSnapshot {
public:
    struct Part {
        /// Where it belongs below the drive's root; empty for the root itself. Parents come before children.
        std::string place;
        std::filesystem::path folder;
    };

    /// Throws Failure. Needs no privilege for subvolumes of the caller.
    DriveSnapshot(const std::filesystem::path& drive, const std::stop_token& stop);
    DriveSnapshot(const DriveSnapshot&) = delete;
    DriveSnapshot& operator=(const DriveSnapshot&) = delete;
    ~DriveSnapshot();

    [[nodiscard]] const std::vector<Part>& parts() const { return _parts; }

private:
    void take(const std::filesystem::path& volume, const std::string& place);

    std::filesystem::path _folder;
    std::string _stem;
    std::vector<Part> _parts;
};

/// Whether a folder inside a snapshot is the empty place of a subvolume that the snapshot left out.
[[nodiscard]] bool standsForVolume(const struct statx& status);

/// Whether an export that was killed, or that runs now, has some on the drive.
[[nodiscard]] bool hasLeftoverSnapshots(const std::filesystem::path& drive);

/// Removes what an export that was killed left on the drive; nobody may be exporting. Answers whether nothing
/// is left.
bool removeLeftoverSnapshots(const std::filesystem::path& drive, const std::stop_token& stop = {});

} // namespace ferrobank::drive
