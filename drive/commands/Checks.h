#pragma once

#include "commands/CheckRow.h"
#include "commands/FullReading.h"
#include "platform/Log.h"
#include "platform/Paths.h"

#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// The checks of `ferrobank check`, in the order of the application's list and then the drive's own. Each is
/// reported twice: running, then passed or failed. None is ever skipped.
///
/// | id        | passes when                                                                          |
/// |-----------|--------------------------------------------------------------------------------------|
/// | running   | the serving process holds its lock and answers within a second                        |
/// | drive     | mounted, not read-only, once only, and a file can be written, synced, read and removed |
/// | login     | the login service is enabled or the autostart entry is on                              |
/// | space     | the computer's disk has more than the reserve free                                     |
/// | store     | the image is whole, the user's own and attached once                                   |
/// | integrity | no file is known that cannot be read, no new device error, no reading is due           |
/// | sharing   | the last pass had no error and is not older than seven days                            |
///
/// With `Depth::Full` every file is read before the row "integrity" is decided.
struct CheckRun {
    enum class Depth { Usual, Full };

    Depth depth = Depth::Usual;
    std::function<void(const CheckRow&)> report;
    /// Of a full reading, called some times a second. May be empty.
    ReadingProgress progress{};
    /// Ends a full reading; the rows that follow are still decided.
    std::stop_token stop{};
};

struct CheckOutcome {
    bool allPassed = true;
    /// Of a full reading: files that cannot be read, ready for display, at most 10,000.
    std::vector<std::string> unreadable;
};

CheckOutcome runChecks(const Paths& paths, const Log& log, const CheckRun& run);

} // namespace ferrobank::drive
