#pragma once

#include "exporting/Export.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "state/Work.h"

#include <filesystem>
#include <stop_token>
#include <string>

namespace ferrobank::drive {

/// Passes an export's progress on: to whoever asks for the status, every tenth to the log, as a bar to a
/// terminal, and to the serving process, which does not share meanwhile.
class ExportTeller {
public:
    ExportTeller(const Paths& paths, const Log& log, WorkLock& work);

    void tell(const ExportProgress& progress);

    /// The stages after the copy: everything they do counts as comparing.
    void compareFromNow() { _comparing = true; }

    /// Ends the bar's line.
    void end();

private:
    const Paths& _paths;
    const Log& _log;
    WorkLock& _work;
    bool _terminal = false;
    bool _comparing = false;
    bool _inLine = false;
    std::string _label;
    std::uint64_t _tenth = 0;
};

/// Starts the drive unless it is mounted, and answers where. Throws Failure.
[[nodiscard]] std::filesystem::path mountedDrive(const Paths& paths, const Log& log);

/// Copies all files of the drive, writes what is not in the copy to the log, and throws Failure unless it is
/// whole. What could be copied in spite of differences is then found in the destination.
ExportResult copyAndVerify(Export& copy, const Log& log, ExportTeller& teller);

/// `ferrobank export`: the copy and its verification, and the drive stays as it is. The copy holds what the
/// drive held when it began. Throws Failure; an interrupted one goes on when it is repeated.
void exportDrive(const Paths& paths, const Log& log, const std::filesystem::path& destination);

} // namespace ferrobank::drive
