#pragma once

#include "exporting/Abilities.h"
#include "exporting/Staging.h"

#include <ctime>
#include <filesystem>
#include <functional>
#include <stop_token>
#include <string>

namespace ferrobank::drive {

[[nodiscard]] timespec wallClockNow();

struct ExportRequest {
    /// Root of the mounted drive.
    std::filesystem::path drive;
    /// The folder of the image; nothing may be exported into it.
    std::filesystem::path store;
    /// As the user wrote it; shown in sentences.
    std::filesystem::path destination;
    /// The clock by which the kernel stamps files; another one for tests.
    std::function<timespec()> wallClock = &wallClockNow;
};

enum class ExportStart { Fresh, Continue };

// clang-format off
/// Everything that can be refused before the first change. Throws Failure with the sentence for the user:
///
/// | destination                                     | sentence begins                                        |
/// |-------------------------------------------------|--------------------------------------------------------|
/// | its parent is missing                           | The folder PARENT does not exist.                      |
/// | on the drive, whatever path leads there         | PATH lies on the drive itself.                         |
/// | in the store                                    | PATH lies in the drive's own store.                    |
/// | no folder                                       | PATH is not a folder.                                  |
/// | not empty, and no export of this drive there    | PATH already holds files. Choose an empty folder.      |
/// | an interrupted export, and a file of the user's | “FILE” in PATH is not from the drive.                  |
/// | a finished copy that somebody has changed since | “FILE” in PATH was changed after it was copied there.  |
/// | cannot be written                               | PATH cannot be written: …                              |
/// | cannot hold what is on the drive                | “FILE” is a symbolic link, which PATH cannot hold. …   |
/// | too small                                       | The files need 8.4 GB, but PATH has only 3.1 GB free.  |
///
/// Nothing but a trial folder, removed again, is made. Answers whether an earlier export goes on.
// clang-format on
ExportStart checkDestination(const ExportRequest& request, const std::stop_token& stop);

/// The identifier of the volume that a folder lies on, or empty where it is no drive.
[[nodiscard]] std::string volumeUuid(const std::filesystem::path& folder);

} // namespace ferrobank::drive
