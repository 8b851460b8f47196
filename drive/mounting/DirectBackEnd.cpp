#include "mounting/DirectBackEnd.h"

#include "mounting/FilesSubvolume.h"
#include "mounting/VolumeUsers.h"
#include "platform/Failure.h"
#include "platform/Files.h"

#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <sstream>
#include <thread>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr int kLoopAttempts = 16;
constexpr const char* kReadOnlyFolder = "read-only";
constexpr std::uint32_t kSectorBytes = 4096;
constexpr std::chrono::seconds kReleaseLimit{5};
constexpr std::chrono::milliseconds kReleaseStep{10};

bool hasBackingFile(const std::string& device)
{
    const std::filesystem::path backing =
        "/sys/block" / std::filesystem::path(device).filename() / "loop/backing_file";
    return ::access(backing.c_str(), F_OK) == 0;
}

Failure mountFailure(int error, const std::string& device)
{
    if (error == ENODEV || !kernelHasBtrfs()) {
        return Failure("This system's kernel has no Btrfs support.", "no-btrfs");
    }
    const Failure failure = systemFailure("The drive could not be mounted", error);
    // The loop device of a killed process is neither free nor usable for a moment, or has let go of its file
    // by now.
    const bool passing = error == EBUSY || error == ENXIO || !hasBackingFile(device);
    return Failure(failure.text(), passing ? "device-busy" : failure.code());
}

/// False when the kernel refuses direct I/O on this host file system and the caller should do without.
bool configure(int loop, int image, std::uint32_t extraFlags)
{
    loop_config settings{};
    settings.fd = static_cast<std::uint32_t>(image);
    settings.block_size = kSectorBytes;
    settings.info.lo_flags = LO_FLAGS_AUTOCLEAR | extraFlags;
    return ::ioctl(loop, LOOP_CONFIGURE, &settings) == 0;
}

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

bool kernelHasBtrfs(const std::filesystem::path& list)
{
    std::istringstream text(readSmallFile(list).value_or(std::string()));
    for (std::string word; text >> word;) {
        if (word == "btrfs") {
            return true;
        }
    }
    return false;
}

FreshLoop makeLoop(const std::filesystem::path& image)
{
    const FileDescriptor file(::open(image.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW));
    if (!file) {
        throw systemFailure("The drive's store could not be opened", errno);
    }
    return makeLoop(file);
}

FreshLoop makeLoop(const FileDescriptor& file)
{
    const FileDescriptor control(::open("/dev/loop-control", O_RDWR | O_CLOEXEC));
    if (!control) {
        throw Failure("This system has no loop devices, which the drive needs.", "no-loop");
    }
    int error = 0;
    for (int attempt = 0; attempt < kLoopAttempts; ++attempt) {
        const int number = ::ioctl(control.get(), LOOP_CTL_GET_FREE);
        FreshLoop loop{.device = "/dev/loop" + std::to_string(number), .keepAlive = FileDescriptor()};
        loop.keepAlive.reset(number < 0 ? -1 : ::open(loop.device.c_str(), O_RDWR | O_CLOEXEC));
        if (!loop.keepAlive) {
            throw systemFailure("This system gives out no loop device", errno);
        }
        if (configure(loop.keepAlive.get(), file.get(), LO_FLAGS_DIRECT_IO)) {
            return loop;
        }
        error = errno;
        if (error == EINVAL && configure(loop.keepAlive.get(), file.get(), 0)) {
            return loop;
        }
        // Somebody else took the free device first: ask for the next one.
        if (errno != EBUSY) {
            break;
        }
    }
    throw systemFailure("The drive's store could not be attached", error);
}

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

bool awaitLoopGone(const std::string& device)
{
    const auto limit = std::chrono::steady_clock::now() + kReleaseLimit;
    while (hasBackingFile(device)) {
        if (std::chrono::steady_clock::now() > limit) {
            return false;
        }
        std::this_thread::sleep_for(kReleaseStep);
    }
    return true;
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
