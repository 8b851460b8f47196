#include "commands/UninstallCommand.h"

#include "commands/ExportRun.h"
#include "commands/Interruption.h"
#include "commands/ServeCommand.h"
#include "commands/StoppedDrive.h"
#include "commands/StoreDeletion.h"
#include "figures/DisplayText.h"
#include "login/LoginStart.h"
#include "mounting/BackEndChoice.h"
#include "mounting/HelperBackEnd.h"
#include "platform/Failure.h"
#include "platform/Files.h"
#include "state/Work.h"

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace ferrobank::drive {

namespace {

/// An image that cannot be used is still worth the refusal: only without any file is there nothing to copy.
bool hasImage(const Paths& paths)
{
    struct stat status{};
    return ::lstat(paths.image.c_str(), &status) == 0 || ::access(paths.figures.c_str(), F_OK) == 0;
}

/// A refusal is no reason to stop: what is left does nothing without its store.
void forgetApproval(const Paths& paths, const Log& log)
{
    try {
        forgetMountHelper(paths);
    } catch (const Failure& failure) {
        log.write("The administrator's approval stays: " + failure.text());
    }
}

bool isInstalled(const Paths& paths)
{
    return ::access(paths.store.c_str(), F_OK) == 0;
}

void requireGoOn(const std::stop_token& stop)
{
    if (stop.stop_requested()) {
        throw Failure("The uninstall was cancelled. The drive stays as it was.", "cancelled");
    }
}

/// With nobody able to write any more: makes the copy equal to the drive, and answers what the image says of
/// itself at that moment.
std::optional<Superblock> completeCopy(const Paths& paths, const Log& log, Export& copy, StoppedDrive& drive,
                                       ExportTeller& teller)
{
    const Volume volume = drive.mountReadOnly();
    const std::optional<Superblock> compared = readSuperblock(paths.image);
    teller.compareFromNow();
    const ExportResult result = copy.bringUpToDate(volume.mountPoint);
    teller.end();
    if (result.end != ExportResult::End::Verified) {
        log.write("Not exported: " + result.text);
        throw Failure(result.text, "export");
    }
    if (result.copied > 0) {
        log.write("Changed while the copy was made and copied once more: " + std::to_string(result.copied) +
                  (result.copied == 1 ? " file." : " files."));
    }
    drive.unmount();
    return compared;
}

} // namespace

void uninstall(const Paths& paths, const Log& log, const UninstallWishes& wishes)
{
    const Interruption interruption;
    const LoginStart login(paths, log);
    if (!isInstalled(paths)) {
        if (wishes.exportTo) {
            finishEarlierExport(*wishes.exportTo);
        }
        login.takeAway();
        return;
    }
    WorkLock work = WorkLock::take(paths, "uninstall");
    ExportTeller teller(paths, log, work);
    std::optional<Export> copy;
    ExportResult copied;
    if (wishes.exportTo && hasImage(paths)) {
        copy.emplace(
            ExportRequest{
                .drive = mountedDrive(paths, log), .store = paths.store, .destination = *wishes.exportTo},
            [&teller](const ExportProgress& progress) { teller.tell(progress); }, interruption.token());
        copied = copyAndVerify(*copy, log, teller);
        log.write("Exported and verified " + std::to_string(copied.files) + " files, " +
                  displayBytes(copied.bytes) + ", in " + displayName(wishes.exportTo->string()) + ".");
    }
    requireGoOn(interruption.token());
    work.tell(Work::Phase::Detaching);
    StoppedDrive drive(paths, log);
    std::optional<Superblock> compared;
    if (copy) {
        compared = completeCopy(paths, log, *copy, drive, teller);
        requireGoOn(interruption.token());
        copy->publish();
    }
    work.tell(Work::Phase::Removing);
    requireGoOn(interruption.token());

    if (wishes.store == StoreFate::Delete) {
        deleteStore(paths, log, compared);
    }
    drive.stayAway();
    login.takeAway();
    drive.home().removeIfOwn();
    forgetApproval(paths, log);
    if (copy) {
        copy->finish();
    } else if (wishes.exportTo) {
        finishEarlierExport(*wishes.exportTo);
    }
    log.write("Ferrobank was uninstalled.");
}

} // namespace ferrobank::drive
