#include "space/GuardFile.h"

#include "figures/DeviceCounters.h"
#include "figures/TreeWalk.h"
#include "platform/Failure.h"

#include <fcntl.h>
#include <linux/btrfs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

namespace ferrobank::drive {

namespace {

/// The file system gives out at most this much in one piece.
constexpr std::uint64_t kLargePiece = 256ULL << 20;
constexpr std::uint64_t kSmallPiece = 4ULL << 20;
constexpr const char* kGuardFolder = "space";
/// What drives of the first form have; it is kept, without its name.
constexpr const char* kNamedGuard = "guard";
constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

bool isOwnFile(int descriptor, nlink_t names)
{
    struct stat status{};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == names &&
           status.st_uid == ::geteuid();
}

bool isWritable(int descriptor)
{
    const int flags = ::fcntl(descriptor, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
}

FileDescriptor makeNameless(int folder)
{
    return FileDescriptor(::openat(folder, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
}

void makeSubvolume(int folder, const char* name)
{
    btrfs_ioctl_vol_args subvolume{};
    std::strncpy(subvolume.name, name, sizeof subvolume.name - 1);
    // One that is there is as good; where none can be made, the folder around it has to do.
    ::ioctl(folder, BTRFS_IOC_SUBVOL_CREATE, &subvolume);
}

std::uint64_t floorTo(std::uint64_t piece, std::uint64_t bytes)
{
    return bytes / piece * piece;
}

/// Length of the next piece behind `length` bytes: large ones from boundary to boundary, small ones before
/// the first boundary and behind the last.
std::uint64_t nextPiece(std::uint64_t length, std::uint64_t wanted)
{
    const bool large = length % kLargePiece == 0 && wanted - length >= kLargePiece;
    return large ? kLargePiece : std::min(kSmallPiece, wanted - length);
}

/// What the file is cut to on its way to fewer bytes: the end of a piece, or the kernel keeps the rest of one
/// that is cut, which nobody can use or count.
std::uint64_t cutLength(std::uint64_t length, std::uint64_t wanted)
{
    const bool endsInSmallOnes = wanted > floorTo(kLargePiece, length);
    return endsInSmallOnes ? wanted : floorTo(kLargePiece, wanted);
}

} // namespace

GuardFile::GuardFile(std::filesystem::path mountPoint, std::string uuid, FileDescriptor earlier)
    : _mountPoint(std::move(mountPoint)), _uuid(std::move(uuid))
{
    if (earlier && isOwnFile(earlier.get(), 0) && isWritable(earlier.get()) && isOnDrive(earlier)) {
        _file = std::move(earlier);
    }
}

bool GuardFile::isOnDrive(const FileDescriptor& descriptor) const
{
    const std::optional<VolumeState> volume = volumeState(descriptor.get());
    return volume && volume->uuid == _uuid;
}

FileDescriptor GuardFile::openDrive() const
{
    FileDescriptor root(::open(_mountPoint.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return root && isOnDrive(root) ? std::move(root) : FileDescriptor();
}

FileDescriptor GuardFile::takeNamedOne(const FileDescriptor& toolFolder) const
{
    FileDescriptor file(
        ::openat(toolFolder.get(), kNamedGuard, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    const bool isGuard = file && isOwnFile(file.get(), 1) && isOnDrive(file);
    return isGuard && ::unlinkat(toolFolder.get(), kNamedGuard, 0) == 0 ? std::move(file) : FileDescriptor();
}

FileDescriptor GuardFile::make() const
{
    const FileDescriptor root = openDrive();
    if (!root) {
        return {};
    }
    if (::mkdirat(root.get(), kToolFolder, 0700) != 0 && errno != EEXIST) {
        throw systemFailure("Cannot make the drive's own folder", errno);
    }
    const FileDescriptor toolFolder(::openat(root.get(), kToolFolder, kOpenFolder));
    FileDescriptor file;
    if (toolFolder && isOnDrive(toolFolder)) {
        if (FileDescriptor named = takeNamedOne(toolFolder)) {
            return named;
        }
        makeSubvolume(toolFolder.get(), kGuardFolder);
        const FileDescriptor own(::openat(toolFolder.get(), kGuardFolder, kOpenFolder));
        file = makeNameless(own ? own.get() : toolFolder.get());
    }
    // Somebody may have put a link or a file in place of the folder; the drive is guarded all the same.
    if (!file || !isOnDrive(file)) {
        file = makeNameless(root.get());
    }
    if (!file) {
        throw systemFailure("Cannot make the space guard", errno);
    }
    return isOnDrive(file) ? std::move(file) : FileDescriptor();
}

std::uint64_t GuardFile::size() const
{
    struct stat status{};
    if (!_file || ::fstat(_file.get(), &status) != 0) {
        return 0;
    }
    return static_cast<std::uint64_t>(status.st_blocks) * 512;
}

void GuardFile::settle() const
{
    const FileDescriptor root = openDrive();
    if (!root) {
        return;
    }
    std::uint64_t transaction = 0;
    if (::ioctl(root.get(), BTRFS_IOC_START_SYNC, &transaction) != 0 ||
        ::ioctl(root.get(), BTRFS_IOC_WAIT_SYNC, &transaction) != 0)
    {
        throw systemFailure("Cannot have the drive count its free space", errno);
    }
}

void GuardFile::resize(std::uint64_t bytes, const std::stop_token& stop)
{
    if (!_file && bytes > 0) {
        _file = make();
    }
    if (!_file) {
        return;
    }
    struct stat status{};
    if (::fstat(_file.get(), &status) != 0) {
        throw systemFailure("Cannot look at the space guard", errno);
    }
    const std::uint64_t wanted = floorTo(kSmallPiece, bytes + kSmallPiece - 1);
    auto length = static_cast<std::uint64_t>(status.st_size);
    if (length > wanted) {
        length = cutLength(length, wanted);
        if (::ftruncate(_file.get(), static_cast<off_t>(length)) != 0) {
            throw systemFailure("Cannot shrink the space guard", errno);
        }
    }
    while (length < wanted && !stop.stop_requested()) {
        const std::uint64_t piece = nextPiece(length, wanted);
        if (::fallocate(_file.get(), 0, static_cast<off_t>(length), static_cast<off_t>(piece)) != 0) {
            if (errno == ENOSPC) {
                return;
            }
            throw systemFailure("Cannot grow the space guard", errno);
        }
        length += piece;
    }
}

} // namespace ferrobank::drive
