#pragma once

#include "exporting/Destination.h"
#include "exporting/Progress.h"

#include <cstdint>
#include <stop_token>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// How an export ended. Only after `Verified` may anybody remove the drive's store.
///
/// | end         | text, the sentence for the user     | mark in the destination |
/// |-------------|-------------------------------------|-------------------------|
/// | Verified    | empty                               | removed                 |
/// | Differences | how many, and the first three       | stays                   |
/// | Failed      | why the copy had to stop            | stays                   |
/// | Cancelled   | says so                             | stays                   |
struct ExportResult {
    enum class End { Verified, Differences, Failed, Cancelled };

    End end = End::Failed;
    std::string text;
    std::vector<std::string> firstDifferences;
    std::uint64_t differences = 0;
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
};

/// Copies all files of the drive into the destination and verifies the copy from its disk. The copy is made
/// from a snapshot, so that programs may go on writing; nothing that people have on the drive is changed or
/// removed. Runs on the calling thread; `receive` is called on it once a second.
///
/// Refusals come before the first change and are thrown as Failure (see checkDestination); everything later
/// is in the result.
[[nodiscard]] ExportResult exportFiles(const ExportRequest& request, const ProgressReceiver& receive,
                                       const std::stop_token& stop);

} // namespace ferrobank::drive
