#pragma once

#include "commands/CheckRow.h"
#include "platform/Log.h"
#include "platform/Paths.h"

#include <functional>

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
/// | integrity | no device errors and no unreadable file                                                |
/// | sharing   | the last pass had no error and is not older than seven days                            |
void runChecks(const Paths& paths, const Log& log, const std::function<void(const CheckRow&)>& report);

} // namespace ferrobank::drive
