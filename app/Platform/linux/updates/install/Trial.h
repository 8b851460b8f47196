#pragma once

#include "Platform/linux/updates/install/Bans.h"
#include "Platform/linux/updates/install/InstallPlace.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ferrobank::updates {

/// A version that was just installed and has not yet shown that it works. Kept as a few lines of text in the
/// staging folder from just before the swap until the version reports healthy or is taken back.
struct Trial {
    static constexpr int kMostFailedStarts = 2;

    std::string version;
    std::string previous;
    int starts = 0; ///< of this version as the running program, none of which has reported healthy yet

    friend bool operator==(const Trial&, const Trial&) = default;
};

/// The text of a trial and back; none when it cannot be read. Pure.
[[nodiscard]] std::string trialText(const Trial& trial);
[[nodiscard]] std::optional<Trial> readTrial(std::string_view text);

/// What a starting program of this version has to do about a trial. Pure.
enum class StartAct {
    Run,      ///< no trial, one that has not failed often enough, or a version that runs just now
    TakeBack, ///< it has failed too often: swap back and start the other version
    Forget    ///< the swap never happened, or was taken back: drop the record, then run
};
[[nodiscard]] StartAct actAtStart(const std::optional<Trial>& trial, std::string_view ownVersion,
                                  bool runsAlready);

/// The record at a place. Writing throws UpdateFailure (Install, Space); a record that is there already is
/// changed also on a full disk, since the new text takes its room.
[[nodiscard]] std::optional<Trial> trialAt(const InstallPlace& place);
void writeTrial(const InstallPlace& place, const Trial& trial);
void forgetTrial(const InstallPlace& place);

/// Versions that were taken back, whether or not that still keeps them from being tried.
[[nodiscard]] std::vector<Ban> bansAt(const InstallPlace& place);
void writeBans(const InstallPlace& place, const std::vector<Ban>& bans); ///< throws UpdateFailure

/// Takes now, while there is room, what taking this version back will need: the note of its failure and the
/// way back. To be called before it is installed. Throws UpdateFailure (Install, Space).
void prepareTakingBack(const InstallPlace& place, const Trial& trial, std::int64_t now);

/// Swaps the previous version back in and notes the failed one. A note that cannot be written holds nothing
/// up. Throws UpdateFailure when the versions cannot be swapped.
void takeBack(const InstallPlace& place, const Trial& trial, std::int64_t now);

/// To be called first thing by the executable in application mode, before any library of the bundle is
/// loaded: takes a version on trial back when it has failed too often and nothing runs from it. Returns the
/// executable to run instead of this one, if another version is installed now. Costs one failed look-up when
/// nothing is on trial. Never fails: what cannot be read or written leaves this version running.
[[nodiscard]] std::optional<std::filesystem::path>
executableToRunInstead(const InstallPlace& place, const std::filesystem::path& self = "/proc/self/exe");

/// Counts a start of the installed version if that is on trial. To be called once the start has become the
/// running program, or when it cannot: a click on a program that runs already, or a start without a display,
/// says nothing about the version. Never fails.
void countStart(const InstallPlace& place);

} // namespace ferrobank::updates
