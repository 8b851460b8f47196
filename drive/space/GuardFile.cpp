#include "space/GuardFile.h"

#include "figures/DeviceCounters.h"
#include "figures/TreeWalk.h"
#include "platform/Failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr std::uint64_t kStep = 256ULL << 30;
constexpr std::uint64_t kBlock = 4096;
constexpr const char* kGuardPath = ".ferrobank/guard";

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
    const std::uint64_t wanted = bytes / kBlock * kBlock;
    auto length = static_cast<std::uint64_t>(status.st_size);
    while (length != wanted && !stop.stop_requested()) {
        const std::uint64_t step = std::min(kStep, length < wanted ? wanted - length : length - wanted);
        if (length < wanted) {
            if (::fallocate(file.get(), 0, static_cast<off_t>(length), static_cast<off_t>(step)) != 0) {
                if (errno == ENOSPC) {
                    return;
                }
                throw systemFailure("Cannot grow the space guard", errno);
            }
            length += step;
        } else {
            length -= step;
            if (::ftruncate(file.get(), static_cast<off_t>(length)) != 0) {
                throw systemFailure("Cannot shrink the space guard", errno);
            }
        }
    }
}

} // namespace ferrobank::drive
