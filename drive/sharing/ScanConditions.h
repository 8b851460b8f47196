#pragma once

#include "figures/Pacing.h"

#include <filesystem>
#include <optional>

namespace ferrobank::drive {

/// The computer's state as far as it matters for work in the background.
struct ScanConditions {
    /// Runnable tasks, averaged over a minute.
    double load = 0;
    unsigned cores = 1;
    bool onMains = true;
    /// Charge of the battery, 0 to 100; empty without one.
    std::optional<int> battery;
    /// Since the volume's generation last changed.
    Seconds sinceLastChange{};
};

/// Whether a pass may start: the drive has been quiet for a minute, the computer has a core to spare, and it
/// is on mains or has more than half of its battery left. What cannot be known does not stand in the way.
[[nodiscard]] bool mayScan(const ScanConditions& conditions);

/// Reads load and power supplies; `sinceLastChange` is the caller's. The folders are replaced in tests.
[[nodiscard]] ScanConditions
currentConditions(const std::filesystem::path& loadFile = "/proc/loadavg",
                  const std::filesystem::path& supplies = "/sys/class/power_supply");

} // namespace ferrobank::drive
