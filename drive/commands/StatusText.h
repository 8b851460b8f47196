#pragma once

#include "commands/StatusReport.h"
#include "state/State.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ferrobank::drive {

/// What `ferrobank status` shows to people beside the report's own figures.
struct StatusDetails {
    /// Of the serving process; nothing while none runs.
    std::optional<State> state;
    /// What programs can still write to the drive.
    std::optional<std::uint64_t> free;
    /// Seconds since the epoch.
    std::int64_t now = 0;

    [[nodiscard]] static StatusDetails gather(const Paths& paths);
};

/// Some lines for people: the drive's state, its figures, what is at work, what comes next, and, where there
/// is no drive, the step that leads to one.
[[nodiscard]] std::string statusText(const StatusReport& report, const StatusDetails& details);

/// "a moment ago", "5 minutes ago", "yesterday", "3 days ago"; a time in the future is a moment ago.
[[nodiscard]] std::string timeAgo(std::int64_t then, std::int64_t now);

/// "66 %, 3.0 : 1": the part of the files' size that is saved, and that size against what is taken up.
[[nodiscard]] std::string ratioText(std::uint64_t files, std::uint64_t saved);

} // namespace ferrobank::drive
