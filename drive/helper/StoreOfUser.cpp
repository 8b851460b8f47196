#include "helper/StoreOfUser.h"

#include "platform/Failure.h"

#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace ferrobank::drive {

namespace {

/// Opening so has no effect on what is opened and needs no right to it.
constexpr int kLookFlags = O_PATH | O_NOFOLLOW | O_CLOEXEC;

struct stat factsOf(const FileDescriptor& file, const std::string& name)
{
    struct stat facts{};
    if (!file || ::fstat(file.get(), &facts) != 0) {
        throw systemFailure("Cannot open " + name, errno);
    }
    return facts;
}

void requireOwn(const struct stat& facts, const User& user, mode_t kind, const std::string& name)
{
    if (facts.st_uid != user.number || (facts.st_mode & S_IFMT) != kind) {
        throw Failure(name + " is not the user's own.", "foreign-owner");
    }
}

} // namespace

StoreOfUser::StoreOfUser(User user, FileDescriptor image) : _user(std::move(user)), _image(std::move(image))
{
    const struct stat facts = factsOf(_image, "the drive's store");
    _device = facts.st_dev;
    _inode = facts.st_ino;
}

StoreOfUser StoreOfUser::open(const User& user)
{
    const UsersRights rights(user);
    FileDescriptor folder(::open(user.home.c_str(), kLookFlags));
    requireOwn(factsOf(folder, user.home.string()), user, S_IFDIR, user.home.string());
    for (const char* name : {"Library", "Application Support", "Ferrobank", "store"}) {
        folder = FileDescriptor(::openat(folder.get(), name, kLookFlags));
        requireOwn(factsOf(folder, name), user, S_IFDIR, name);
    }
    FileDescriptor image(::openat(folder.get(), "drive.btrfs", kLookFlags));
    requireOwn(factsOf(image, "the drive's store"), user, S_IFREG, "The drive's store");
    return {user, std::move(image)};
}

FileDescriptor StoreOfUser::openImage() const
{
    const UsersRights rights(_user);
    // Leads to the very file that the descriptor is, not to a path.
    const std::string self = "/proc/self/fd/" + std::to_string(_image.get());
    FileDescriptor image(::open(self.c_str(), O_RDWR | O_CLOEXEC));
    if (!image) {
        throw systemFailure("The drive's store could not be opened", errno);
    }
    return image;
}

std::vector<StoreOfUser::Loop> StoreOfUser::loops() const
{
    std::vector<Loop> found;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/sys/block", error)) {
        const std::string name = entry.path().filename().string();
        if (!name.starts_with("loop") || ::access((entry.path() / "loop/backing_file").c_str(), F_OK) != 0) {
            continue;
        }
        const std::string device = "/dev/" + name;
        const FileDescriptor loop(::open(device.c_str(), O_RDONLY | O_CLOEXEC));
        loop_info64 facts{};
        // One that has let go meanwhile is none of them.
        if (loop && ::ioctl(loop.get(), LOOP_GET_STATUS64, &facts) == 0 && facts.lo_device == _device &&
            facts.lo_inode == _inode)
        {
            found.push_back({.device = device, .readOnly = (facts.lo_flags & LO_FLAGS_READ_ONLY) != 0});
        }
    }
    return found;
}

} // namespace ferrobank::drive
