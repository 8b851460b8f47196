#include "commands/ExportRun.h"

#include "commands/Interruption.h"
#include "commands/ProgressBar.h"
#include "commands/RestartCommand.h"
#include "commands/ServedVolume.h"
#include "control/ControlClient.h"
#include "figures/DisplayText.h"
#include "platform/Failure.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kShownLeftOut = 10;

Work::Phase phaseOf(ExportProgress::Phase phase)
{
    return phase == ExportProgress::Phase::Copying ? Work::Phase::Copying : Work::Phase::Verifying;
}

void tellLeftOut(const LeftOut& leftOut, const Log& log)
{
    if (leftOut.count() == 0) {
        return;
    }
    std::size_t shown = 0;
    for (const std::string& sentence : leftOut.first()) {
        log.write(sentence);
        if (shown++ < kShownLeftOut) {
            std::fputs((sentence + "\n").c_str(), stdout);
        }
    }
    if (leftOut.count() > shown) {
        log.write("and " + std::to_string(leftOut.count() - shown) + " more of that kind.");
    }
    if (leftOut.count() > kShownLeftOut) {
        std::fputs(("and " + std::to_string(leftOut.count() - kShownLeftOut) + " more; the log names them.\n")
                       .c_str(),
                   stdout);
    }
}

} // namespace

ExportTeller::ExportTeller(const Paths& paths, const Log& log, WorkLock& work)
    : _paths(paths), _log(log), _work(work), _terminal(::isatty(STDOUT_FILENO) == 1)
{}

void ExportTeller::tell(const ExportProgress& progress)
{
    _work.tell(_comparing ? Work::Phase::Comparing : phaseOf(progress.phase), progress.done, progress.total);
    // Also keeps the serving process from sharing for another minute; without one there is nobody to keep.
    if (!_comparing) {
        static_cast<void>(
            ask(ServerProbe::probe(_paths).socket(),
                {.operation = Operation::PauseDedup, .done = progress.done, .total = progress.total},
                kPingLimit));
    }
    const std::string label = _comparing                                         ? "Comparing"
                              : progress.phase == ExportProgress::Phase::Copying ? "Copying"
                                                                                 : "Verifying";
    const std::string line = progressLine(label, progress.done, progress.total);
    if (_terminal) {
        std::fputs(("\r" + line + "\033[K").c_str(), stdout);
        std::fflush(stdout);
        _inLine = true;
    }
    const std::uint64_t tenth = progress.done / std::max<std::uint64_t>(1, progress.total / 10);
    if (label != _label || tenth != _tenth) {
        _label = label;
        _tenth = tenth;
        _log.write(line);
    }
}

void ExportTeller::end()
{
    if (_inLine) {
        std::fputs("\n", stdout);
        _inLine = false;
    }
}

std::filesystem::path mountedDrive(const Paths& paths, const Log& log)
{
    ensureServing(paths, log);
    waitUntilMounted(paths);
    const std::optional<Volume> volume = findServedVolume(paths, ServerProbe::probe(paths));
    if (!volume) {
        throw Failure("The drive is not mounted, so its files cannot be copied.", "not-mounted");
    }
    return volume->mountPoint;
}

ExportResult copyAndVerify(Export& copy, const Log& log, ExportTeller& teller)
{
    ExportResult result = copy.copy();
    teller.end();
    tellLeftOut(copy.leftOut(), log);
    if (result.end == ExportResult::End::Differences) {
        // Most files are there, and whoever has a failing disk should find them.
        try {
            copy.publish();
        } catch (const Failure& failure) {
            result.text += " " + failure.text();
        }
    }
    if (result.end != ExportResult::End::Verified) {
        log.write("Not exported: " + result.text);
        throw Failure(result.text, "export");
    }
    return result;
}

void exportDrive(const Paths& paths, const Log& log, const std::filesystem::path& destination)
{
    const Interruption interruption;
    if (::access(paths.store.c_str(), F_OK) != 0) {
        throw Failure("There is no drive yet, so there are no files to copy.", "not-installed");
    }
    WorkLock work = WorkLock::take(paths, "export");
    const std::filesystem::path drive = mountedDrive(paths, log);
    ExportTeller teller(paths, log, work);
    Export copy(
        {.drive = drive, .store = paths.store, .destination = destination},
        [&teller](const ExportProgress& progress) { teller.tell(progress); }, interruption.token());
    const ExportResult result = copyAndVerify(copy, log, teller);
    copy.publish();
    copy.finish();
    const std::string text = "Exported and verified " + std::to_string(result.files) + " files, " +
                             displayBytes(result.bytes) + ", in " + displayName(destination.string()) + ".";
    log.write(text);
    std::fputs((text + "\n").c_str(), stdout);
}

} // namespace ferrobank::drive
