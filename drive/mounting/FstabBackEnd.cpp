#include "mounting/FstabBackEnd.h"

#include "mounting/DirectBackEnd.h"
#include "mounting/VolumeUsers.h"
#include "platform/Failure.h"
#include "platform/Program.h"

#include <chrono>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr std::chrono::seconds kMountLimit{60};

std::string lastLine(std::string text)
{
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    const std::size_t start = text.rfind('\n');
    return start == std::string::npos ? text : text.substr(start + 1);
}

} // namespace

FstabBackEnd::FstabBackEnd(Paths paths) : _paths(std::move(paths)) {}

void FstabBackEnd::prepare(const std::optional<LoopDevice>&, Interaction)
{
    throw Failure(
        "The new drive has to be prepared by an administrator. Run: pkexec ferrobank helper-fstab add",
        "not-prepared");
}

Volume FstabBackEnd::attach(const std::optional<LoopDevice>&, Interaction)
{
    // mount(8) takes the device that has the file already, and wants the folder as the line spells it.
    return mount({_paths.drive.string()});
}

Volume FstabBackEnd::attachReadOnly(Interaction)
{
    // The one option that mount(8) takes from an ordinary user; it makes the loop device read-only, too.
    return mount({"-r", _paths.drive.string()});
}

Volume FstabBackEnd::mount(const std::vector<std::string>& arguments)
{
    const ProgramOutcome outcome = runSystemProgram("mount", arguments, kMountLimit);
    if (!outcome.succeeded()) {
        if (!kernelHasBtrfs()) {
            throw Failure("This system's kernel has no Btrfs support.", "no-btrfs");
        }
        throw Failure("The drive could not be mounted: " + lastLine(outcome.output), "mount");
    }
    const std::optional<Volume> volume = findVolume(_paths.image, Recognise::ByFile);
    if (!volume) {
        throw Failure(
            "The drive's line in /etc/fstab mounts something else. Run: pkexec ferrobank helper-fstab add",
            "fstab");
    }
    return *volume;
}

void FstabBackEnd::detach(const Volume& volume)
{
    const ProgramOutcome outcome = runSystemProgram("umount", {volume.mountPoint.string()}, kMountLimit);
    if (!outcome.succeeded()) {
        if (outcome.output.find("busy") != std::string::npos) {
            throw Failure(busySentence(usersOf(volume.mountPoint)), "busy");
        }
        throw Failure("The drive could not be unmounted: " + lastLine(outcome.output), "umount");
    }
    if (otherMounts(volume.loop, readMountTable()).empty()) {
        awaitLoopGone(volume.loop);
    }
}

} // namespace ferrobank::drive
