#pragma once

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
    int starts = 0; ///< of this version, none of which has reported healthy yet

    friend bool operator==(const Trial&, const Trial&) = default;
};

/// The text of a trial and back; none when it cannot be read. Pure.
[[nodiscard]] std::string trialText(const Trial& trial);
[[nodiscard]] std::optional<Trial> readTrial(std::string_view text);

/// What a starting program of this version has to do about a trial. Pure.
enum class StartAct {
    Run,      ///< no trial, or one that has been decided
    Count,    ///< this start is on trial: note it, then run
    TakeBack, ///< it has failed too often: swap back and start the other version
    Forget    ///< the swap never happened, or was taken back: drop the record, then run
};
[[nodiscard]] StartAct actAtStart(const std::optional<Trial>& trial, std::string_view ownVersion);

/// The record at a place. Writing throws UpdateFailure (Install, Space).
[[nodiscard]] std::optional<Trial> trialAt(const InstallPlace& place);
void writeTrial(const InstallPlace& place, const Trial& trial);
void forgetTrial(const InstallPlace& place);

/// Versions that were taken back; they are not offered again.
[[nodiscard]] std::vector<std::string> badVersionsAt(const InstallPlace& place);

/// Swaps the previous version back in, after noting the failed one as bad. Throws UpdateFailure.
void takeBack(const InstallPlace& place, const Trial& trial);

/// To be called first thing by the executable in application mode, before any library of the bundle is
/// loaded: counts the start of a version on trial and takes it back when it has failed too often. Returns the
/// executable to run instead of this one, if another version is installed now. Costs one failed look-up when
/// nothing is on trial. Never fails: what cannot be read or written leaves this version running.
[[nodiscard]] std::optional<std::filesystem::path>
executableToRunInstead(const InstallPlace& place, const std::filesystem::path& self = "/proc/self/exe");

} // namespace ferrobank::updates
