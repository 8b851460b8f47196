#include "mounting/HelperBackEnd.h"

#include "mounting/LoopSetup.h"
#include "mounting/MountHelper.h"
#include "mounting/VolumeUsers.h"
#include "platform/Failure.h"
#include "platform/Program.h"

#include <chrono>
#include <utility>

namespace ferrobank::drive {

namespace {

/// Unmounting writes out what is left.
constexpr std::chrono::seconds kLimit{60};
constexpr int kDismissed = 126;
constexpr int kNotAuthorized = 127;

std::string lastLine(std::string text)
{
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    const std::size_t start = text.rfind('\n');
    return start == std::string::npos ? text : text.substr(start + 1);
}

ProgramOutcome runHelper(const std::string& wish, int input)
{
    return runSystemProgram("pkexec", {"--disable-internal-agent", kMountHelper, "drive", wish}, kLimit,
                            input);
}

Failure failureOf(const ProgramOutcome& outcome, const std::filesystem::path& mountPoint)
{
    switch (outcome.end) {
    case ProgramOutcome::End::NotFound:
        return Failure("The program pkexec, which starts the mount helper, is not installed.", "no-pkexec");
    case ProgramOutcome::End::TimedOut:
        return Failure("The mount helper does not end. Restart this computer if it stays so.", "not-ended");
    case ProgramOutcome::End::Exited:
        break;
    }
    switch (outcome.status) {
    case HelperBusy:
        return Failure(busySentence(usersOf(mountPoint)), "busy");
    case HelperNotAllowed:
        return Failure("An administrator has to allow you to mount the drive. To have that done, " +
                           mountingAdvice(),
                       "not-authorized");
    case HelperDeviceBusy:
        return Failure(lastLine(outcome.output), "device-busy");
    case HelperNoBtrfs:
        return Failure(lastLine(outcome.output), "no-btrfs");
    case kDismissed:
    case kNotAuthorized:
        return Failure("The rules of polkit on this computer keep the mount helper from being started.",
                       "not-authorized");
    default:
        return Failure(lastLine(outcome.output), "mount-helper");
    }
}

} // namespace

HelperBackEnd::HelperBackEnd(Paths paths, int storeLock) : _paths(std::move(paths)), _storeLock(storeLock) {}

void HelperBackEnd::run(const std::string& wish, const std::filesystem::path& mountPoint) const
{
    const ProgramOutcome outcome = runHelper(wish, _storeLock);
    if (!outcome.succeeded()) {
        throw failureOf(outcome, mountPoint);
    }
}

void HelperBackEnd::prepare(const std::optional<LoopDevice>&, Interaction)
{
    run("prepare", {});
}

Volume HelperBackEnd::attach(const std::optional<LoopDevice>&, Interaction)
{
    run("mount", {});
    return mounted();
}

Volume HelperBackEnd::attachReadOnly(Interaction)
{
    run("mount-read-only", {});
    return mounted();
}

Volume HelperBackEnd::mounted() const
{
    const std::optional<Volume> volume = findVolume(_paths.image, Recognise::ByFile);
    if (!volume) {
        throw Failure("The mount helper has mounted the drive where it cannot be seen from here.",
                      "mount-helper");
    }
    return *volume;
}

void HelperBackEnd::detach(const Volume& volume)
{
    run("unmount", volume.mountPoint);
    // One that was adopted may lie where udisks2 mounts, of which its own unmounting knows.
    if (const std::optional<Volume> left = findVolume(_paths.image, Recognise::ByFile)) {
        const ProgramOutcome outcome = runSystemProgram("umount", {left->mountPoint.string()}, kLimit);
        if (outcome.output.find("busy") != std::string::npos) {
            throw Failure(busySentence(usersOf(left->mountPoint)), "busy");
        }
        if (!outcome.succeeded()) {
            throw Failure("The drive could not be unmounted: " + lastLine(outcome.output), "umount");
        }
    }
    if (otherMounts(volume.loop, readMountTable()).empty()) {
        awaitLoopGone(volume.loop);
    }
}

void forgetMountHelper(const Paths& paths)
{
    if (!hasSomethingToForget(paths)) {
        return;
    }
    const ProgramOutcome outcome = runHelper("forget", -1);
    if (!outcome.succeeded()) {
        throw failureOf(outcome, {});
    }
}

} // namespace ferrobank::drive
