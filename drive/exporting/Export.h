#pragma once

#include "exporting/Destination.h"
#include "exporting/KnownTree.h"
#include "exporting/LeftOut.h"
#include "exporting/Progress.h"
#include "exporting/Staging.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace ferrobank::drive {

class Differences;

/// How an export, or one stage of it, ended. Only after `Verified` may anybody remove the drive's store.
///
/// | end         | text, the sentence for the user     | the copy                                       |
/// |-------------|-------------------------------------|------------------------------------------------|
/// | Verified    | empty                               | whole                                          |
/// | Differences | how many, and the first three       | what there is moves up; the mark stays         |
/// | Failed      | why the copy had to stop            | stays inside the mark, a later export goes on  |
/// | Cancelled   | says so                             | stays inside the mark, a later export goes on  |
struct ExportResult {
    enum class End { Verified, Differences, Failed, Cancelled };

    End end = End::Failed;
    std::string text;
    std::vector<std::string> firstDifferences;
    std::uint64_t differences = 0;
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
    /// Files that this stage wrote; the others were in the copy already.
    std::uint64_t copied = 0;
};

/// One export in its stages, on one thread; `receive` is called on it once a second. Nothing that people have
/// on the drive is changed or removed, and nothing of theirs in the destination.
///
/// The order for a copy after which the drive goes: `copy` while programs go on writing, then, with nobody
/// able to write, `bringUpToDate`, then `publish`, then the deletion, then `finish`.
class Export {
public:
    /// Refusals come before the first change and are thrown as Failure (see checkDestination).
    Export(ExportRequest request, ProgressReceiver receive, std::stop_token stop);
    Export(const Export&) = delete;
    Export& operator=(const Export&) = delete;

    /// Copies everything from a snapshot and verifies the copy from its disk.
    [[nodiscard]] ExportResult copy();

    /// Compares the drive as it is now with what was copied, and copies and verifies what differs. `drive` is
    /// where it is mounted so that nobody can write; afterwards the copy and the drive are the same.
    [[nodiscard]] ExportResult bringUpToDate(const std::filesystem::path& drive);

    /// The copy moves up into the destination. Throws Failure.
    void publish();

    /// The last step of all: takes the mark of an incomplete copy away. Throws Failure.
    void finish();

    /// What is on the drive and by its nature not in the copy.
    [[nodiscard]] const LeftOut& leftOut() const { return _leftOut; }

private:
    struct Source;

    [[nodiscard]] ExportResult guarded(const std::function<void(ExportResult&)>& stage);
    void run(const Source& source, ExportResult& result);
    [[nodiscard]] std::string sentenceFor(const Differences& differences) const;

    ExportRequest _request;
    std::string _shown;
    ProgressReceiver _receive;
    std::stop_token _stop;
    ExportStart _start;
    LeftOut _leftOut;
    std::optional<Staging> _staging;
    std::optional<KnownTree> _known;
};

/// All stages of a copy that leaves the drive as it is: it holds what the drive held at the moment of its
/// snapshot. `leftOut` gets what is not in it.
[[nodiscard]] ExportResult exportFiles(const ExportRequest& request, const ProgressReceiver& receive,
                                       const std::stop_token& stop, LeftOut* leftOut = nullptr);

} // namespace ferrobank::drive
