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
#include <optional>
#include <utility>

namespace ferrobank::drive {

namespace {

/// The file system gives out at most this much in one piece.
constexpr std::uint64_t kLargePiece = 256ULL << 20;
constexpr std::uint64_t kSmallPiece = 4ULL << 20;
constexpr const char* kGuardPath = ".ferrobank/guard";

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

GuardFile::GuardFile(std::filesystem::path mountPoint, std::string uuid)
    : _mountPoint(std::move(mountPoint)), _uuid(std::move(uuid))
{}

FileDescriptor GuardFile::openDrive() const
{
    FileDescriptor root(::open(_mountPoint.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::optional<VolumeState> volume = root ? volumeState(root.get()) : std::nullopt;
    return volume && volume->uuid == _uuid ? std::move(root) : FileDescriptor();
}

std::uint64_t GuardFile::size() const
{
    const FileDescriptor root = openDrive();
    struct stat status{};
    if (!root || ::fstatat(root.get(), kGuardPath, &status, AT_SYMLINK_NOFOLLOW) != 0) {
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

void GuardFile::resize(std::uint64_t bytes, const std::stop_token& stop) const
{
    const FileDescriptor root = openDrive();
    if (!root) {
        return;
    }
    if (::mkdirat(root.get(), kToolFolder, 0700) != 0 && errno != EEXIST) {
        throw systemFailure("Cannot make the drive's own folder", errno);
    }
    const FileDescriptor file(
        ::openat(root.get(), kGuardPath, O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) {
        throw systemFailure("Cannot open the space guard", errno);
    }
    struct stat status{};
    if (::fstat(file.get(), &status) != 0) {
        throw systemFailure("Cannot look at the space guard", errno);
    }
    const std::uint64_t wanted = floorTo(kSmallPiece, bytes + kSmallPiece - 1);
    auto length = static_cast<std::uint64_t>(status.st_size);
    if (length > wanted) {
        length = cutLength(length, wanted);
        if (::ftruncate(file.get(), static_cast<off_t>(length)) != 0) {
            throw systemFailure("Cannot shrink the space guard", errno);
        }
    }
    while (length < wanted && !stop.stop_requested()) {
        const std::uint64_t piece = nextPiece(length, wanted);
        if (::fallocate(file.get(), 0, static_cast<off_t>(length), static_cast<off_t>(piece)) != 0) {
            if (errno == ENOSPC) {
                return;
            }
            throw systemFailure("Cannot grow the space guard", errno);
        }
        length += piece;
    }
}

} // namespace ferrobank::drive
