#include "commands/ExportRun.h"

#include "commands/Interruption.h"
#include "commands/LateChanges.h"
#include "commands/ProgressBar.h"
#include "commands/RestartCommand.h"
#include "commands/ServedVolume.h"
#include "control/ControlClient.h"
#include "exporting/Export.h"
#include "figures/DisplayText.h"
#include "platform/Failure.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace ferrobank::drive {

namespace {

class ProgressTeller {
public:
    ProgressTeller(const Log& log, std::filesystem::path socket)
        : _log(log), _socket(std::move(socket)), _terminal(::isatty(STDOUT_FILENO) == 1)
    {}

    void tell(const ExportProgress& progress)
    {
        // Also keeps the serving process from sharing for another minute; without one there is nobody to
        // keep.
        static_cast<void>(
            ask(_socket, {.operation = Operation::PauseDedup, .done = progress.done, .total = progress.total},
                kPingLimit));
        const std::string label = progress.phase == ExportProgress::Phase::Copying ? "Copying" : "Verifying";
        const std::string line = progressLine(label, progress.done, progress.total);
        if (_terminal) {
            std::fputs(("\r" + line + "\033[K").c_str(), stdout);
            std::fflush(stdout);
        }
        const std::uint64_t tenth = progress.done / std::max<std::uint64_t>(1, progress.total / 10);
        if (label != _label || tenth != _tenth) {
            _label = label;
            _tenth = tenth;
            _log.write(line);
        }
    }

    void end() const
    {
        if (_terminal) {
            std::fputs("\n", stdout);
        }
    }

private:
    const Log& _log;
    std::filesystem::path _socket;
    bool _terminal = false;
    std::string _label;
    std::uint64_t _tenth = 0;
};

} // namespace

void exportBeforeUninstall(const Paths& paths, const Log& log, const std::filesystem::path& destination)
{
    ensureServing(paths, log);
    waitUntilMounted(paths);
    const ServerProbe server = ServerProbe::probe(paths);
    const std::optional<Volume> volume = findServedVolume(paths, server);
    if (!volume) {
        throw Failure("The drive is not mounted, so its files cannot be copied.", "not-mounted");
    }
    const Interruption interruption;
    ProgressTeller teller(log, server.socket());
    const ExportRequest request{
        .drive = volume->mountPoint, .store = paths.store, .destination = destination};
    const ExportResult result = exportFiles(
        request, [&teller](const ExportProgress& progress) { teller.tell(progress); }, interruption.token());
    teller.end();
    if (result.end != ExportResult::End::Verified) {
        log.write("Not exported: " + result.text);
        throw Failure(result.text, "export");
    }
    log.write("Exported and verified " + std::to_string(result.files) + " files, " +
              displayBytes(result.bytes) + ", in " + displayName(destination.string()) + ".");
    if (const std::optional<std::string> late =
            findLateChange(volume->mountPoint, destination, interruption.token()))
    {
        throw Failure(
            "\u201C" + *late +
                "\u201D was written while the copy was made and is not in it. Close the programs that use "
                "the drive and export into another folder.",
            "late-change");
    }
}

} // namespace ferrobank::drive
