#include "helper/UserDrive.h"

#include "helper/RootsFolders.h"
#include "mounting/FilesSubvolume.h"
#include "mounting/MountTable.h"
#include "mounting/Volume.h"
#include "platform/Failure.h"

#include <fcntl.h>
#include <linux/btrfs.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <initializer_list>
#include <system_error>
#include <utility>

namespace ferrobank::drive {

namespace {

using Options = std::initializer_list<std::pair<const char*, const char*>>;

constexpr unsigned kSafe = MOUNT_ATTR_NOSUID | MOUNT_ATTR_NODEV | MOUNT_ATTR_NOATIME;
constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// What the kernel keeps in its table until the mount is placed or its descriptor closed: it lies nowhere.
FileDescriptor mountApart(const std::string& device, unsigned attributes, const Options& options)
{
    const FileDescriptor context(::fsopen("btrfs", FSOPEN_CLOEXEC));
    if (!context) {
        throw mountFailure(errno, device);
    }
    bool accepted = ::fsconfig(context.get(), FSCONFIG_SET_STRING, "source", device.c_str(), 0) == 0;
    for (const auto& [name, value] : options) {
        const unsigned command = value == nullptr ? FSCONFIG_SET_FLAG : FSCONFIG_SET_STRING;
        accepted = accepted && ::fsconfig(context.get(), command, name, value, 0) == 0;
    }
    if (!accepted || ::fsconfig(context.get(), FSCONFIG_CMD_CREATE, nullptr, nullptr, 0) != 0) {
        throw mountFailure(errno, device);
    }
    FileDescriptor mounted(::fsmount(context.get(), FSMOUNT_CLOEXEC, attributes));
    if (!mounted) {
        throw mountFailure(errno, device);
    }
    return mounted;
}

/// A file system can name further devices as its parts. An image that a user made must not bring any in: what
/// is mounted has to lie on the loop device alone.
void requireOnly(const FreshLoop& loop, const FileDescriptor& top)
{
    btrfs_ioctl_fs_info_args parts{};
    btrfs_ioctl_dev_info_args part{};
    if (::ioctl(top.get(), BTRFS_IOC_FS_INFO, &parts) != 0) {
        throw mountFailure(errno, loop.device);
    }
    part.devid = parts.max_id;
    struct stat ours{};
    struct stat used{};
    // Under whatever name the kernel knows the device.
    const bool same = ::ioctl(top.get(), BTRFS_IOC_DEV_INFO, &part) == 0 &&
                      ::fstat(loop.keepAlive.get(), &ours) == 0 &&
                      ::stat(reinterpret_cast<const char*>(part.path), &used) == 0 && S_ISBLK(used.st_mode) &&
                      used.st_rdev == ours.st_rdev;
    if (parts.num_devices != 1 || !same) {
        throw Failure("The drive's store names other disks as parts of the drive.", "foreign-device");
    }
}

FileDescriptor openTop(const FileDescriptor& mounted, const FreshLoop& loop)
{
    FileDescriptor top(::openat(mounted.get(), ".", kFolderFlags));
    if (!top) {
        throw mountFailure(errno, loop.device);
    }
    requireOnly(loop, top);
    return top;
}

bool isMountPoint(const std::filesystem::path& folder)
{
    struct statx facts{};
    return ::statx(AT_FDCWD, folder.c_str(), AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, STATX_BASIC_STATS,
                   &facts) == 0 &&
           (facts.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

bool isOn(const std::vector<StoreOfUser::Loop>& loops, const MountEntry& mount)
{
    return std::any_of(loops.begin(), loops.end(),
                       [&](const StoreOfUser::Loop& loop) { return loop.device == mount.source; });
}

/// A loop device that somebody else made may be set to stay.
void letGoWhenUnmounted(const std::string& device)
{
    const FileDescriptor loop(::open(device.c_str(), O_RDWR | O_CLOEXEC));
    loop_info64 facts{};
    if (loop && ::ioctl(loop.get(), LOOP_GET_STATUS64, &facts) == 0 &&
        (facts.lo_flags & LO_FLAGS_AUTOCLEAR) == 0)
    {
        facts.lo_flags |= LO_FLAGS_AUTOCLEAR;
        ::ioctl(loop.get(), LOOP_SET_STATUS64, &facts);
    }
}

Failure cannotUnmount(int error)
{
    if (error == EBUSY) {
        return Failure("The drive is in use.", "busy");
    }
    return systemFailure("The drive could not be unmounted", error);
}

} // namespace

UserDrive::UserDrive(const Places& places, User user) : _places(places), _user(std::move(user)) {}

FreshLoop UserDrive::attach(const StoreOfUser& store) const
{
    const std::vector<StoreOfUser::Loop> loops = store.loops();
    if (loops.size() > 1) {
        throw Failure("The drive's store is attached more than once. Eject the second one.",
                      "attached-twice");
    }
    if (loops.empty()) {
        FreshLoop fresh = makeLoop(store.openImage());
        if (store.loops().size() > 1) {
            throw Failure("Another program has attached the drive's store at the same moment.",
                          "device-busy");
        }
        return fresh;
    }
    if (loops.front().readOnly) {
        throw Failure("Another program has the drive's store open read-only. Eject it there.",
                      "attached-elsewhere");
    }
    FreshLoop existing{.device = loops.front().device,
                       .keepAlive = FileDescriptor(::open(loops.front().device.c_str(), O_RDWR | O_CLOEXEC))};
    // The number may be somebody else's by now.
    if (!existing.keepAlive || store.loops().size() != 1 || store.loops().front().device != existing.device) {
        throw Failure("The drive's store is just being detached.", "device-busy");
    }
    return existing;
}

void UserDrive::mount(Access access) const
{
    const StoreOfUser store = StoreOfUser::open(_user);
    const std::filesystem::path place = _places.mounts / std::to_string(_user.number) / "Ferrobank";
    const FileDescriptor folder = openRootsFolder(place.parent_path(), _places.top);
    if (isMountPoint(place)) {
        const std::vector<StoreOfUser::Loop> loops = store.loops();
        for (const MountEntry& mount : readMountTable()) {
            if (mount.mountPoint == place && isOn(loops, mount)) {
                return;
            }
        }
        throw Failure("Another drive of yours is still mounted. Unmount it first.", "mounted-elsewhere");
    }
    const FileDescriptor target = openRootsFolder(place, _places.top);
    const FreshLoop loop = attach(store);
    const FileDescriptor mounted =
        access == Access::ReadOnly
            ? mountApart(loop.device, kSafe, {{"ro", nullptr}, {"subvol", kFilesSubvolume}})
            : mountApart(loop.device, kSafe,
                         {{"compress", "zstd:1"},
                          {"discard", "sync"},
                          {"subvol", kFilesSubvolume},
                          {"user_subvol_rm_allowed", nullptr}});
    const FileDescriptor top = openTop(mounted, loop);
    struct stat facts{};
    if (::fstat(top.get(), &facts) != 0 || facts.st_uid != _user.number) {
        throw Failure("The files in the drive's store belong to another user.", "foreign-owner");
    }
    if (::move_mount(mounted.get(), "", target.get(), "",
                     MOVE_MOUNT_F_EMPTY_PATH | MOVE_MOUNT_T_EMPTY_PATH) != 0)
    {
        throw mountFailure(errno, loop.device);
    }
    letGoWhenUnmounted(loop.device);
}

void UserDrive::prepare() const
{
    const StoreOfUser store = StoreOfUser::open(_user);
    std::string device;
    {
        const FreshLoop loop = attach(store);
        device = loop.device;
        const FileDescriptor mounted = mountApart(device, kSafe | MOUNT_ATTR_NOEXEC, {{"discard", "sync"}});
        const FileDescriptor top = openTop(mounted, loop);
        const UsersRights rights(_user);
        ensureFilesSubvolume(top.get(), _user.number, _user.group);
        letGoWhenUnmounted(device);
    }
    awaitLoopGone(device);
}

bool UserDrive::unmountOwn() const
{
    const std::filesystem::path place = _places.mounts / std::to_string(_user.number) / "Ferrobank";
    if (!isOnlyRootsToWrite(place.parent_path(), _places.top) || !isMountPoint(place)) {
        return false;
    }
    if (::umount2(place.c_str(), UMOUNT_NOFOLLOW) != 0) {
        throw cannotUnmount(errno);
    }
    return true;
}

void UserDrive::unmountAtHome() const
{
    const StoreOfUser store = StoreOfUser::open(_user);
    const std::vector<StoreOfUser::Loop> loops = store.loops();
    std::error_code error;
    const std::filesystem::path place = std::filesystem::canonical(_user.home, error) / "Ferrobank";
    for (const MountEntry& mount : readMountTable()) {
        if (mount.mountPoint != place || !isOn(loops, mount)) {
            continue;
        }
        // From inside the home, whatever its own path leads to meanwhile. What a mount lies on cannot be
        // moved away or replaced, so the name below it means the mount that was found.
        const FileDescriptor home(::open(_user.home.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        struct stat facts{};
        if (!home || ::fstat(home.get(), &facts) != 0 || facts.st_uid != _user.number ||
            ::fchdir(home.get()) != 0)
        {
            throw systemFailure("Cannot open " + _user.home.string(), errno);
        }
        const int reason = ::umount2("Ferrobank", UMOUNT_NOFOLLOW) == 0 ? 0 : errno;
        if (::chdir("/") != 0 || reason != 0) {
            throw cannotUnmount(reason);
        }
        return;
    }
}

void UserDrive::removeMountPoint() const
{
    const std::filesystem::path place = _places.mounts / std::to_string(_user.number) / "Ferrobank";
    ::rmdir(place.c_str());
    ::rmdir(place.parent_path().c_str());
}

void UserDrive::unmount() const
{
    if (!unmountOwn()) {
        unmountAtHome();
    }
    removeMountPoint();
}

} // namespace ferrobank::drive
