#pragma once

#include "platform/Paths.h"
#include "state/ServerProbe.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ferrobank::drive {

/// What `ferrobank status` tells. The members are the keys of its JSON; sizes are bytes, and absent when
/// unknown.
struct StatusReport {
    bool installed = false;
    bool mounted = false;
    std::string mountpoint;
    std::optional<std::uint64_t> volume_used;
    std::optional<std::uint64_t> store_bytes;
    std::optional<std::uint64_t> saved;
    std::optional<std::string> attach_error;
    bool update_pending = false;
    /// The command that copies, unmounts or deletes just now, its phase (see Work), and how many bytes of how
    /// many the phase has done.
    std::optional<std::string> work;
    std::optional<std::string> work_phase;
    std::optional<std::uint64_t> work_done;
    std::optional<std::uint64_t> work_total;
    std::string log;

    /// Gathers it without opening anything on the drive, so that a drive that hangs cannot hang it.
    [[nodiscard]] static StatusReport gather(const Paths& paths);

    /// One line, absent keys left out.
    [[nodiscard]] std::string toJson() const;
};

/// Whether the program that serves is no longer the one at the path it was started from.
[[nodiscard]] bool isReplaced(const State& state);

} // namespace ferrobank::drive
