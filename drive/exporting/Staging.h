#pragma once

#include "platform/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace ferrobank::drive {

/// The folder in the destination while an export is not complete: all that is copied is built inside it and
/// moves up in the end, so that whatever else lies in the destination belongs to the user and is never
/// touched. It holds `drive` (which drive it is from), `files` (the copy) and, from the moment at which the
/// copy moves up, `published` (what moves).
inline constexpr const char* kIncompleteMark = ".ferrobank-incomplete";

/// What such folders, and the trials of what a destination can hold, begin with; they are ours to remove.
inline constexpr const char* kTrialStem = ".ferrobank-trial-";

/// What an earlier export left in a destination, found without changing anything there.
///
/// | found     | means                                                     |
/// |-----------|-----------------------------------------------------------|
/// | Nothing   | the folder is empty, but for trials of ours               |
/// | Begun     | an export of this drive was interrupted and goes on       |
/// | Foreign   | it holds files and no export of this drive                |
struct EarlierExport {
    enum class Found { Nothing, Begun, Foreign };

    Found found = Found::Nothing;
    /// What has moved up already: inode by name, as it was listed before.
    std::map<std::string, std::uint64_t> published;

    /// Throws Failure when the folder cannot be read.
    [[nodiscard]] static EarlierExport lookIn(const std::filesystem::path& destination,
                                              const std::string& driveUuid);

    /// Something of the user's that stands in the way of a name in the root of the drive, or nothing: a file
    /// of that name that no export put there.
    [[nodiscard]] std::optional<std::string> conflictWith(const std::filesystem::path& drive,
                                                          const std::filesystem::path& destination) const;

    /// What has moved up and was changed since by somebody else, or nothing.
    [[nodiscard]] std::optional<std::string> changedSince(const std::filesystem::path& destination) const;
};

/// A destination at work. One thread; all operations throw Failure. A kill or a power cut at any moment
/// leaves what a later one goes on with.
class Staging {
public:
    /// Makes the marked folder, or goes on with it and takes back what had moved up. `shown` is how the user
    /// named the destination.
    Staging(const std::filesystem::path& destination, std::string shown, const std::string& driveUuid);

    /// Where the copy is built.
    [[nodiscard]] int files() const { return _files.get(); }

    /// Writes out everything that the destination's disk still holds in memory.
    void sync() const;
    /// Moves the copy up into the destination, replacing nothing. Refuses ("in-the-way") what stands there.
    void publish();
    /// Takes the mark away: the copy is complete, and nobody will go on with it.
    void finish();

private:
    void takeBack();

    std::string _shown;
    FileDescriptor _destination;
    FileDescriptor _mark;
    FileDescriptor _files;
};

/// Takes the mark of a complete copy away that a killed process could not: one that has moved up as a whole.
/// For when the drive is gone and no export can go on with it any more.
void finishEarlierExport(const std::filesystem::path& destination);

} // namespace ferrobank::drive
