#include "store/StoreExamination.h"

#include "platform/Failure.h"
#include "platform/Program.h"
#include "store/Superblock.h"

#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>

namespace ferrobank::drive {

namespace {

constexpr std::chrono::seconds kStructureCheckLimit{120};

// The magic numbers of statfs(2) for file systems that are served from elsewhere or by a user process.
constexpr std::array<std::int64_t, 9> kRemoteTypes{
    0x6969,     // NFS
    0x517B,     // SMB
    0xFF534D42, // CIFS
    0xFE534D42, // SMB 2
    0x01021997, // 9P
    0x00C36400, // Ceph
    0x5346414F, // AFS
    0x73757245, // Coda
    0x65735546, // FUSE
};

void requireOwnRegularFile(const std::filesystem::path& image, const struct stat& status)
{
    if (S_ISLNK(status.st_mode)) {
        throw Failure("The drive's store is a link. Put the file itself back at " + image.string() + ".",
                      "store-foreign");
    }
    if (!S_ISREG(status.st_mode)) {
        throw Failure("The drive's store is not a file: " + image.string() + ".", "store-foreign");
    }
    if (status.st_uid != ::geteuid()) {
        throw Failure("The drive's store belongs to another user: " + image.string() + ".", "store-foreign");
    }
}

} // namespace

bool isNetworkFileSystem(std::int64_t type)
{
    return std::find(kRemoteTypes.begin(), kRemoteTypes.end(), type & 0xFFFFFFFF) != kRemoteTypes.end();
}

StoreState examineStore(const Paths& paths)
{
    struct statfs host{};
    if (::statfs(paths.store.c_str(), &host) == 0 && isNetworkFileSystem(host.f_type)) {
        throw Failure(
            "The drive cannot lie on a network file system. Its store belongs on a disk of this computer.",
            "store-network");
    }
    struct stat status{};
    if (::lstat(paths.image.c_str(), &status) != 0) {
        if (errno != ENOENT) {
            throw systemFailure("Cannot look at " + paths.image.string(), errno);
        }
        if (::access(paths.figures.c_str(), F_OK) == 0) {
            throw Failure(
                "The drive's data is missing: " + paths.image.string() +
                    " is gone. Put it back, or remove the folder that held it to start with an empty drive.",
                "store-missing");
        }
        return StoreState::Missing;
    }
    requireOwnRegularFile(paths.image, status);
    const std::optional<Superblock> superblock = readSuperblock(paths.image);
    if (!superblock) {
        throw Failure("The drive's store is damaged: it holds no volume. The file is kept as it is.",
                      "store-damaged");
    }
    if (static_cast<std::uint64_t>(status.st_size) < superblock->totalBytes) {
        return StoreState::TailCutOff;
    }
    return StoreState::Sound;
}

void restoreLength(const Paths& paths, const Log& log)
{
    const std::optional<Superblock> superblock = readSuperblock(paths.image);
    if (!superblock) {
        return;
    }
    if (::truncate(paths.image.c_str(), static_cast<off_t>(superblock->totalBytes)) != 0) {
        throw systemFailure("Cannot give the drive's store its length back", errno);
    }
    log.write("The store had been cut short; its length is back at " +
              std::to_string(superblock->totalBytes) + " bytes.");
}

void checkStructures(const Paths& paths, const Log& log)
{
    const ProgramOutcome outcome =
        runSystemProgram("btrfs", {"check", "--readonly", paths.image.string()}, kStructureCheckLimit);
    switch (outcome.end) {
    case ProgramOutcome::End::NotFound:
        log.write("The store was not checked: the program btrfs is not installed.");
        return;
    case ProgramOutcome::End::TimedOut:
        log.write("The store's check took longer than two minutes and was left out.");
        return;
    case ProgramOutcome::End::Exited:
        break;
    }
    if (!outcome.succeeded()) {
        log.write("btrfs check ended with " + std::to_string(outcome.status) + ":\n" + outcome.output);
        throw Failure(
            "The drive's structures are damaged. Nothing was changed; the log holds what the check found.",
            "store-damaged");
    }
    log.write("The store's structures were checked after an unclean stop and are sound.");
}

} // namespace ferrobank::drive
