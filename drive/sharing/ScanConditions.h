#pragma once

#include "figures/Pacing.h"

#include <filesystem>
#include <optional>

namespace ferrobank::drive {

enum class FirstPass { No, Yes };
enum class LastPassOld { No, Yes };

/// How long what is new has waited for a pass; see `scanWait`.
enum class Urgency { None, Overdue, LongOverdue };

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
    Urgency urgency = Urgency::None;
};

/// What a pass would have to wait for.
enum class ScanWait { Nothing, Quiet, Load, Power };

/// A pass starts when the drive has been quiet for half a minute, the computer has a core to spare, and it is
/// on mains or has more than half of its battery left. A drive that is never quiet gets its pass once it is
/// overdue, and a computer that is always busy once it is long overdue: at idle priority it takes nothing
/// from anybody. What cannot be known does not stand in the way.
[[nodiscard]] ScanWait scanWait(const ScanConditions& conditions);

/// `waited` is the time since something was first seen that no pass has come to. The first pass of all is
/// overdue after ten minutes, another one after an hour; long overdue after four hours, or as soon as it is
/// overdue and the last one was more than a day ago.
[[nodiscard]] Urgency urgencyOf(Seconds waited, FirstPass first, LastPassOld old);

/// Reads load and power supplies; `sinceLastChange` is the caller's. The folders are replaced in tests.
[[nodiscard]] ScanConditions
currentConditions(const std::filesystem::path& loadFile = "/proc/loadavg",
                  const std::filesystem::path& supplies = "/sys/class/power_supply");

} // namespace ferrobank::drive
