#include "mounting/DirectBackEnd.h"

#include "mounting/FilesSubvolume.h"
#include "mounting/VolumeUsers.h"
#include "platform/Failure.h"

#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr const char* kReadOnlyFolder = "read-only";

/// Unmounts when it goes, whatever happened in between.
class ScratchMount {
public:
    explicit ScratchMount(std::filesystem::path folder) : _folder(std::move(folder)) {}

    ScratchMount(const ScratchMount&) = delete;
    ScratchMount& operator=(const ScratchMount&) = delete;

    ~ScratchMount()
    {
        ::umount2(_folder.c_str(), UMOUNT_NOFOLLOW);
        ::rmdir(_folder.c_str());
    }

private:
    std::filesystem::path _folder;
};

} // namespace

void prepareOnLoop(const std::string& device, const std::filesystem::path& scratch, uid_t owner, gid_t group)
{
    if (::mkdir(scratch.c_str(), 0700) != 0 && errno != EEXIST) {
        throw systemFailure("Cannot make " + scratch.string(), errno);
    }
    // A killed preparation leaves its mount, and the kernel refuses the same one twice on a folder. That
    // mount may be all that keeps the loop device on its file.
    const FileDescriptor held(::open(device.c_str(), O_RDONLY | O_CLOEXEC));
    ::umount2(scratch.c_str(), UMOUNT_NOFOLLOW);
    if (::mount(device.c_str(), scratch.c_str(), "btrfs", MS_NOSUID | MS_NODEV | MS_NOEXEC | MS_NOATIME,
                "discard=sync") != 0)
    {
        const int error = errno;
        ::rmdir(scratch.c_str());
        throw mountFailure(error, device);
    }
    const ScratchMount mounted(scratch);
    ensureFilesSubvolume(scratch, owner, group);
}

bool releaseLoop(const std::string& device)
{
    if (hasBackingFile(device)) {
        // One that was not made by us may not let go by itself.
        const FileDescriptor loop(::open(device.c_str(), O_RDWR | O_CLOEXEC));
        if (loop) {
            ::ioctl(loop.get(), LOOP_CLR_FD);
        }
    }
    return awaitLoopGone(device);
}

void unmountOrName(const std::filesystem::path& mountPoint)
{
    if (::umount2(mountPoint.c_str(), UMOUNT_NOFOLLOW) == 0) {
        return;
    }
    if (errno == EBUSY) {
        throw Failure(busySentence(usersOf(mountPoint)), "busy");
    }
    throw systemFailure("The drive could not be unmounted", errno);
}

DirectBackEnd::DirectBackEnd(std::filesystem::path image, std::filesystem::path mountPoint,
                             std::filesystem::path scratch)
    : _image(std::move(image)), _mountPoint(std::move(mountPoint)), _scratch(std::move(scratch))
{}

void DirectBackEnd::prepare(const std::optional<LoopDevice>& existing, Interaction)
{
    FreshLoop fresh;
    if (!existing) {
        fresh = makeLoop(_image);
    }
    const std::string device = existing ? existing->device : fresh.device;
    prepareOnLoop(device, _scratch, ::geteuid(), ::getegid());
    fresh.keepAlive.reset();
    releaseLoop(device);
}

Volume DirectBackEnd::attach(const std::optional<LoopDevice>& existing, Interaction)
{
    FreshLoop fresh;
    if (!existing) {
        fresh = makeLoop(_image);
    }
    Volume volume{.loop = existing ? existing->device : fresh.device, .mountPoint = _mountPoint};
    if (::mount(volume.loop.c_str(), _mountPoint.c_str(), "btrfs", MS_NOATIME | MS_NOSUID | MS_NODEV,
                kMountOptions) != 0)
    {
        throw mountFailure(errno, volume.loop);
    }
    return volume;
}

Volume DirectBackEnd::attachReadOnly(Interaction)
{
    const std::filesystem::path folder = _scratch.parent_path() / kReadOnlyFolder;
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        throw systemFailure("Cannot make " + folder.string(), errno);
    }
    const FileDescriptor image(::open(_image.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!image) {
        throw systemFailure("The drive's store could not be opened", errno);
    }
    // The kernel makes the device read-only because the file is open for reading alone.
    const FreshLoop fresh = makeLoop(image);
    const Volume volume{.loop = fresh.device, .mountPoint = folder, .readOnly = true};
    if (::mount(volume.loop.c_str(), folder.c_str(), "btrfs",
                MS_RDONLY | MS_NOATIME | MS_NOSUID | MS_NODEV | MS_NOEXEC, kFilesOption) != 0)
    {
        throw mountFailure(errno, volume.loop);
    }
    return volume;
}

void DirectBackEnd::detach(const Volume& volume)
{
    unmountOrName(volume.mountPoint);
    if (volume.mountPoint.filename() == kReadOnlyFolder) {
        ::rmdir(volume.mountPoint.c_str());
    }
    if (otherMounts(volume.loop, readMountTable()).empty()) {
        releaseLoop(volume.loop);
    }
}

} // namespace ferrobank::drive
