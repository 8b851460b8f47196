#pragma once

#include "platform/Files.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ferrobank::drive {

enum class Phase { Starting, Mounted, Stopping, Failed };
enum class SpaceLevel { Ok, Low, Critical };

/// Why the drive is not usable: a word for programs and the sentence for the user.
struct Problem {
    std::string code;
    std::string text;

    bool operator==(const Problem&) const = default;
};

/// How far some long work is, in bytes.
struct WorkProgress {
    std::uint64_t done = 0;
    std::uint64_t total = 0;

    bool operator==(const WorkProgress&) const = default;
};

/// What the next sharing pass waits for.
///
/// | value   | word in the file | means                                                      |
/// |---------|------------------|------------------------------------------------------------|
/// | Changes | "changes"        | all is shared; something has to change first               |
/// | Quiet   | "quiet"          | the drive has been changed a moment ago                    |
/// | Load    | "load"           | the computer has no processor to spare                     |
/// | Power   | "power"          | the battery has less than half of its charge               |
/// | Resume  | "resume"         | somebody paused it                                         |
/// | Export  | "export"         | the files are being copied away                            |
enum class SharingWait { Changes, Quiet, Load, Power, Resume, Export };

/// The scanner that shares repeated data: its last pass and what comes next.
struct SharingState {
    /// Seconds since the epoch of the end of the last complete pass; 0 before the first.
    std::int64_t last = 0;
    /// Of the last pass, complete or not.
    double seconds = 0;
    std::uint64_t shared = 0;
    std::optional<std::string> error{};
    /// Paused by a person, until resumed; also over restarts.
    bool paused = false;
    SharingWait waitsFor = SharingWait::Quiet;
    /// Of the pass at work.
    std::optional<WorkProgress> running{};
    /// Passes that somebody asked for and that have ended since the process started, complete or not: who
    /// waits for one sees it grow.
    std::uint64_t askedPasses = 0;

    bool operator==(const SharingState&) const = default;
};

struct SpaceState {
    std::uint64_t hostFree = 0;
    std::uint64_t reserve = 0;
    /// Allocated bytes of the guard file on the drive.
    std::uint64_t guard = 0;
    SpaceLevel level = SpaceLevel::Ok;

    bool operator==(const SpaceState&) const = default;
};

/// Why every file has to be read once before the drive may count as intact.
enum class ReadingReason { None, CutShort, LostChanges, DeviceErrors, Superblock };

/// Errors that the drive has shown while it was mounted.
struct IntegrityState {
    /// What the kernel has counted on this volume since it was made, and how many of them are settled: a
    /// complete reading has found every file readable since.
    std::uint64_t deviceErrors = 0;
    std::uint64_t settledErrors = 0;
    /// How many files could not be read in the last reading pass, and the first three of them, ready for
    /// display.
    std::uint64_t unreadableFiles = 0;
    std::vector<std::string> unreadable;
    /// Seconds since the epoch of the last complete reading pass.
    std::int64_t lastReading = 0;
    ReadingReason readingDue = ReadingReason::None;
    /// Of the reading pass at work.
    std::optional<WorkProgress> reading{};
    /// The image is older than the one that was used last, and nobody has said yet that this is meant.
    bool olderImage = false;

    /// Keeps the first three names; they are ready for display.
    void setUnreadable(std::uint64_t files, std::vector<std::string> names);

    bool operator==(const IntegrityState&) const = default;
};

struct ExportState {
    std::uint64_t done = 0;
    std::uint64_t total = 0;

    bool operator==(const ExportState&) const = default;
};

/// What the serving process tells the one-shot commands, in `state.json` of the runtime folder. Written by
/// the serving process only, whole files renamed into place, whenever something in it changes. It is to be
/// believed only while the serving process holds its lock.
struct State {
    int process = 0;
    std::string bootId;
    std::string version;
    std::string executablePath;
    FileIdentity executable;
    Phase phase = Phase::Starting;
    std::string backEnd;
    std::string loop;
    std::string mount;
    std::string uuid;
    std::optional<Problem> attachError;
    std::optional<std::uint64_t> volumeUsed;
    /// What sharing and compression saved when the files were summed up, both taken at one time; nothing
    /// while that is not known.
    std::optional<std::uint64_t> saved;
    std::uint64_t walkGeneration = 0;
    /// Seconds since the epoch at which this drive was first served; 0 when unknown.
    std::int64_t since = 0;
    SharingState sharing;
    SpaceState space;
    IntegrityState integrity;
    bool readOnly = false;
    std::optional<ExportState> exportState;

    bool operator==(const State&) const = default;

    [[nodiscard]] std::string toJson() const;
    /// Nothing for anything but a whole state of this version of the format.
    [[nodiscard]] static std::optional<State> fromJson(const std::string& text);
};

/// The word in the file: "starting", "mounted", "stopping", "failed".
[[nodiscard]] std::string phaseWord(Phase phase);
/// "none", "cut-short", "lost-changes", "device-errors", "superblock"; also in the store's mark.
[[nodiscard]] std::string reasonWord(ReadingReason reason);
/// None for a word that is not known.
[[nodiscard]] ReadingReason reasonOf(const std::string& word);

} // namespace ferrobank::drive
