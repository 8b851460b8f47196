#pragma once

#include "exporting/Abilities.h"

#include <filesystem>
#include <stop_token>
#include <string>

namespace ferrobank::drive {

struct ExportRequest {
    /// Root of the mounted drive.
    std::filesystem::path drive;
    /// The folder of the image; nothing may be exported into it.
    std::filesystem::path store;
    /// As the user wrote it; shown in sentences.
    std::filesystem::path destination;
};

enum class ExportStart { Fresh, Continue };

/// Everything that can be refused before the first change. Throws Failure with the sentence for the user:
///
/// | destination                                     | sentence begins |
/// |-------------------------------------------------|--------------------------------------------------------|
/// | its parent is missing                           | The folder PARENT does not exist. | | on the drive,
/// whatever path leads there         | PATH lies on the drive itself.                         | | in the
/// store                                    | PATH lies in the drive's own store.                    | | no
/// folder                                       | PATH is not a folder.                                  | |
/// not empty, unless it has this drive's mark      | PATH already holds files. Choose an empty folder.      |
/// | cannot be written                               | PATH cannot be written: … | | cannot hold what is on
/// the drive                | “FILE” is a symbolic link, which PATH cannot hold. …   | | too small | The
/// files need 8.4 GB, but PATH has only 3.1 GB free.  |
///
/// Nothing but a trial folder, removed again, is made. Answers whether an earlier export goes on.
ExportStart checkDestination(const ExportRequest& request, const std::stop_token& stop);

} // namespace ferrobank::drive
