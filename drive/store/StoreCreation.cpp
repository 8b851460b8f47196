#include "store/StoreCreation.h"

#include "platform/Failure.h"
#include "platform/FileDescriptor.h"
#include "platform/Files.h"
#include "platform/Program.h"
#include "store/StoreLength.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace ferrobank::drive {

namespace {

constexpr std::uint64_t kShortest = 1ULL << 30U;
constexpr std::chrono::seconds kFormatLimit{120};

/// A host that copies on write itself must not do so below ours; the flag only takes on an empty folder's new
/// files.
void switchOffCopyOnWrite(const std::filesystem::path& folder)
{
    struct statfs host{};
    if (::statfs(folder.c_str(), &host) != 0 || host.f_type != BTRFS_SUPER_MAGIC) {
        return;
    }
    const FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    int flags = 0;
    if (directory && ::ioctl(directory.get(), FS_IOC_GETFLAGS, &flags) == 0) {
        flags |= FS_NOCOW_FL;
        ::ioctl(directory.get(), FS_IOC_SETFLAGS, &flags);
    }
}

void requireRoom(const std::filesystem::path& folder)
{
    struct statvfs host{};
    if (::statvfs(folder.c_str(), &host) != 0) {
        throw systemFailure("Cannot look at " + folder.string(), errno);
    }
    const std::uint64_t free = static_cast<std::uint64_t>(host.f_bavail) * host.f_frsize;
    if (free < kRoomForNewStore) {
        throw Failure("This computer has only " + std::to_string(free / 1'000'000) +
                          " MB free; a new drive needs 269 MB. Free some space, then restart Ferrobank.",
                      "host-full");
    }
}

void makeSparseFile(const std::filesystem::path& file)
{
    const FileDescriptor made(
        ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!made) {
        throw systemFailure("Cannot make " + file.string(), errno);
    }
    int error = 0;
    for (std::uint64_t length = storeLength(hostBytes(file.parent_path())); length >= kShortest; length /= 2)
    {
        if (::ftruncate(made.get(), static_cast<off_t>(length)) == 0) {
            return;
        }
        error = errno;
    }
    throw Failure("This computer's disk cannot hold a file of the drive's size (" +
                      std::string(::strerror(error)) + ").",
                  "store-size");
}

/// Formats the file with one folder `u` in it that belongs to the user: only root could make it later,
/// because the root of a new Btrfs is root's.
void format(const std::filesystem::path& file, const std::filesystem::path& skeleton)
{
    const std::filesystem::path own = skeleton / "u";
    if (::mkdir(skeleton.c_str(), 0700) != 0 || ::mkdir(own.c_str(), 0700) != 0) {
        throw systemFailure("Cannot make " + own.string(), errno);
    }
    const ProgramOutcome outcome = runSystemProgram(
        "mkfs.btrfs", {"-q", "-L", "Ferrobank", "--rootdir", skeleton.string(), file.string()}, kFormatLimit);
    if (outcome.end == ProgramOutcome::End::NotFound) {
        throw Failure(
            "The program mkfs.btrfs is missing. Install the package btrfs-progs, then restart Ferrobank.",
            "no-mkfs");
    }
    if (!outcome.succeeded()) {
        throw Failure("The drive could not be formatted: " + outcome.output, "mkfs");
    }
}

void syncFile(const std::filesystem::path& path)
{
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file || ::fsync(file.get()) != 0) {
        throw systemFailure("Cannot write " + path.string(), errno);
    }
}

} // namespace

void createStore(const Paths& paths, const Log& log)
{
    requireRoom(paths.store);
    switchOffCopyOnWrite(paths.store);
    const std::filesystem::path file = paths.store / "drive.btrfs.new";
    const std::filesystem::path skeleton = paths.store / "skeleton.new";
    const auto sweep = [&] {
        std::error_code ignored;
        std::filesystem::remove(file, ignored);
        std::filesystem::remove_all(skeleton, ignored);
    };
    sweep();
    try {
        makeSparseFile(file);
        format(file, skeleton);
        syncFile(file);
        replaceFile(paths.unprepared, "", Durability::Synced);
        if (::rename(file.c_str(), paths.image.c_str()) != 0) {
            throw systemFailure("Cannot name " + paths.image.string(), errno);
        }
        syncFile(paths.store);
    } catch (...) {
        sweep();
        throw;
    }
    sweep();
    log.write("A new drive was made: " + paths.image.string());
}

} // namespace ferrobank::drive
