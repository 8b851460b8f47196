#include "mounting/Attachment.h"

#include "platform/Failure.h"
#include "platform/FileDescriptor.h"
#include "platform/Files.h"
#include "store/StoreCreation.h"
#include "store/StoreExamination.h"
#include "store/StoreLength.h"

#include <fcntl.h>
#include <linux/btrfs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr mode_t kDetachedMode = 0600;
constexpr mode_t kAttachedMode = 0400;
constexpr int kBusyAttempts = 20;
constexpr std::chrono::milliseconds kBusyStep{100};

std::string fileSystemIdentifier(const std::filesystem::path& mountPoint)
{
    const FileDescriptor folder(::open(mountPoint.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    btrfs_ioctl_fs_info_args facts{};
    if (!folder || ::ioctl(folder.get(), BTRFS_IOC_FS_INFO, &facts) != 0) {
        return {};
    }
    std::string text;
    for (int index = 0; index < BTRFS_FSID_SIZE; ++index) {
        if (index == 4 || index == 6 || index == 8 || index == 10) {
            text += '-';
        }
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", facts.fsid[index]);
        text += digits;
    }
    return text;
}

std::filesystem::path canonicalOrEmpty(const std::filesystem::path& path)
{
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(path, error);
    return error ? std::filesystem::path() : real;
}

bool isOnReadOnlyLoop(const Volume& volume, const std::vector<LoopDevice>& loops)
{
    return std::any_of(loops.begin(), loops.end(), [&volume](const LoopDevice& loop) {
        return loop.device == volume.loop && loop.readOnly;
    });
}

} // namespace

bool hasTemporaryIdentity(const std::filesystem::path& mountPoint)
{
    const std::filesystem::path facts =
        std::filesystem::path("/sys/fs/btrfs") / fileSystemIdentifier(mountPoint);
    return readSmallFile(facts / "temp_fsid").value_or("0").starts_with('1');
}

Attachment::Attachment(Paths paths, Log log, std::unique_ptr<BackEnd> backEnd)
    : _paths(std::move(paths)),
      _log(std::move(log)),
      _backEnd(std::move(backEnd)),
      _home(_paths.drive, loginName())
{}

std::optional<Volume> Attachment::current() const
{
    return findVolume(_paths.image, Recognise::ByFile);
}

Volume Attachment::attach(Interaction interaction)
{
    ensurePrivateFolder(_paths.store);
    for (int attempt = 1;; ++attempt) {
        const std::vector<LoopDevice> loops = loopsOf(_paths.image, Recognise::ByFile);
        if (const std::optional<Volume> mounted = findVolume(loops, readMountTable())) {
            if (!isOnReadOnlyLoop(*mounted, loops)) {
                return adopt(*mounted);
            }
            _log.write("Unmounting what an interrupted uninstall left at " + mounted->mountPoint.string() +
                       ".");
            _backEnd->detach(*mounted);
            continue;
        }
        try {
            return mountAnew(interaction, loops);
        } catch (const Failure& failure) {
            if (failure.code() != "device-busy" || attempt == kBusyAttempts) {
                throw;
            }
        }
        std::this_thread::sleep_for(kBusyStep);
    }
}

Volume Attachment::attachReadOnly()
{
    if (!loopsOf(_paths.image, Recognise::ByFile).empty()) {
        throw Failure("Another program has the drive's store open. Eject it there, then try again.",
                      "attached-elsewhere");
    }
    if (_backEnd->mountsAtHome()) {
        _home.becomeMountPoint();
    }
    const Volume volume = _backEnd->attachReadOnly(Interaction::MayAsk);
    const std::optional<Volume> found = current();
    // Its owner may not attach it for writing from now on either.
    if (!found || !found->readOnly || ::chmod(_paths.image.c_str(), kAttachedMode) != 0) {
        _backEnd->detach(volume);
        throw Failure("The drive could not be mounted read-only, so its copy cannot be completed.",
                      "not-read-only");
    }
    return volume;
}

Volume Attachment::adopt(const Volume& volume)
{
    refuseDoubleAttachment(volume);
    pointHomeAt(volume);
    markOpen(volume);
    _log.write("The drive was mounted already, at " + volume.mountPoint.string() + " on " + volume.loop +
               ".");
    return volume;
}

/// A crash leaves the image read-only.
void Attachment::makeWritable() const
{
    if (::chmod(_paths.image.c_str(), kDetachedMode) != 0) {
        throw systemFailure("Cannot open the drive's store", errno);
    }
}

void Attachment::examine(const std::vector<LoopDevice>& loops)
{
    const StoreState state = examineStore(_paths);
    if (state == StoreState::Missing) {
        createStore(_paths, _log);
        return;
    }
    // The checker reads the file itself, which is only meaningful while no kernel works on it.
    const bool detached = loops.empty();
    if (state == StoreState::FirstSuperblockDamaged) {
        if (!detached) {
            throw Failure(
                "The first superblock of the drive's store was damaged while it was attached. Restart "
                "this computer.",
                "store-damaged");
        }
        makeWritable();
        restoreSuperblock(_paths, _log);
        examine(loops);
        return;
    }
    if (state == StoreState::TailCutOff) {
        if (!detached) {
            throw Failure("The drive's store was cut short while it was attached. Restart this computer.",
                          "store-damaged");
        }
        makeWritable();
        restoreLength(_paths, _log);
        checkStructures(_paths, _log);
        return;
    }
    if (detached && ::access(_paths.openMarker.c_str(), F_OK) == 0) {
        checkStructures(_paths, _log);
    }
    if (detached) {
        lengthenStore(_paths, _log);
    }
}

Volume Attachment::mountAnew(Interaction interaction, const std::vector<LoopDevice>& loops)
{
    if (loops.size() > 1) {
        throw Failure("The drive's store is attached more than once (" + loops[0].device + ", " +
                          loops[1].device + "). Eject the second one, then restart Ferrobank.",
                      "attached-twice");
    }
    if (!loops.empty() && loops[0].readOnly) {
        throw Failure("Another program has the drive's store open read-only (" + loops[0].device +
                          "). Eject it there, then restart Ferrobank.",
                      "attached-elsewhere");
    }
    _home.requireFree();
    examine(loops);
    makeWritable();
    std::optional<LoopDevice> existing;
    if (!loops.empty()) {
        existing = loops[0];
    }
    if (::access(_paths.unprepared.c_str(), F_OK) == 0) {
        _backEnd->prepare(existing, interaction);
        removeIfPresent(_paths.unprepared);
        const std::vector<LoopDevice> left = loopsOf(_paths.image, Recognise::ByFile);
        existing = left.empty() ? std::nullopt : std::optional(left[0]);
    }
    if (_backEnd->mountsAtHome()) {
        _home.becomeMountPoint();
    }
    replaceFile(_paths.openMarker, bootId(), Durability::Synced);
    const Volume volume = _backEnd->attach(existing, interaction);
    refuseDoubleAttachment(volume);
    markOpen(volume);
    pointHomeAt(volume);
    _log.write("The drive is mounted at " + volume.mountPoint.string() + " on " + volume.loop + " (" +
               backEndName() + ").");
    return volume;
}

void Attachment::refuseDoubleAttachment(const Volume& volume)
{
    const std::vector<LoopDevice> loops = loopsOf(_paths.image, Recognise::ByFile);
    std::size_t writable = 0;
    for (const LoopDevice& loop : loops) {
        writable += loop.readOnly ? 0 : 1;
    }
    if (writable < 2 && !hasTemporaryIdentity(volume.mountPoint)) {
        return;
    }
    _log.write("The image is attached twice; unmounting " + volume.mountPoint.string() + ".");
    _backEnd->detach(volume);
    throw Failure(
        "The drive's store is attached twice, which would destroy files. Eject the other one, then restart "
        "Ferrobank.",
        "attached-twice");
}

void Attachment::markOpen(const Volume& volume) const
{
    if (::access(_paths.openMarker.c_str(), F_OK) != 0) {
        replaceFile(_paths.openMarker, bootId(), Durability::Synced);
    }
    // The loop device keeps its open file; nobody else can attach the image for writing from now on.
    if (::chmod(_paths.image.c_str(), kAttachedMode) != 0) {
        _log.write("The image of " + volume.loop + " could not be made read-only.");
    }
}

void Attachment::pointHomeAt(const Volume& volume) const
{
    if (canonicalOrEmpty(_paths.drive) != canonicalOrEmpty(volume.mountPoint)) {
        _home.becomeLinkTo(volume.mountPoint);
    }
}

void Attachment::requireStoreInPlace() const
{
    for (const LoopDevice& loop : loopsOf(_paths.image, Recognise::ByFile)) {
        if (loop.backingDeleted) {
            throw Failure(
                "The drive's store was deleted while in use. Copy your files out of ~/Ferrobank now: they "
                "are gone once the drive is unmounted.",
                "store-deleted");
        }
    }
}

void Attachment::detach(const Volume& volume)
{
    requireStoreInPlace();
    _backEnd->detach(volume);
    if (_backEnd->mountsAtHome()) {
        _home.removeIfOwn();
    }
    settleAfterEjection();
    _log.write("The drive was unmounted.");
}

void Attachment::settleAfterEjection() const
{
    // While any loop device still works on the image, it stays protected and counts as open.
    if (!loopsOf(_paths.image, Recognise::ByFile).empty()) {
        return;
    }
    if (::chmod(_paths.image.c_str(), kDetachedMode) != 0 && errno != ENOENT) {
        _log.write("The image could not be made writable again.");
    }
    removeIfPresent(_paths.openMarker);
}

} // namespace ferrobank::drive
