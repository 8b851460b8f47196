#include "store/StoreExamination.h"

#include "platform/Failure.h"
#include "platform/FileDescriptor.h"
#include "platform/Files.h"
#include "platform/Program.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
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

/// Places of superblocks are whole numbers of these units.
std::string displayBinary(std::uint64_t bytes)
{
    constexpr std::uint64_t kMiB = std::uint64_t{1} << 20U;
    constexpr std::uint64_t kGiB = std::uint64_t{1} << 30U;
    return bytes >= kGiB ? std::to_string(bytes / kGiB) + " GiB" : std::to_string(bytes / kMiB) + " MiB";
}

/// The first superblock as it was found, for whoever wants to look at it.
void keepDamaged(const Paths& paths)
{
    const FileDescriptor image(::open(paths.image.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    std::string bytes(4096, '\0');
    if (image && ::pread(image.get(), bytes.data(), bytes.size(), static_cast<off_t>(kSuperblockPlaces[0])) ==
                     static_cast<ssize_t>(bytes.size()))
    {
        replaceFile(paths.image.string() + ".superblock-damaged", bytes, Durability::Synced);
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
    if (isReadOnlyHost(paths.store)) {
        throw Failure(readOnlyHostWords(), "host-read-only");
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
    const std::optional<Superblock> superblock = readWholeSuperblock(paths.image, 0);
    if (!superblock) {
        if (bestMirror(paths.image)) {
            return StoreState::FirstSuperblockDamaged;
        }
        throw Failure(
            "The drive's store is damaged: it holds no volume, and none of the copies of its superblock is "
            "whole. The file is kept as it is.",
            "store-damaged");
    }
    if (static_cast<std::uint64_t>(status.st_size) < superblock->totalBytes) {
        return StoreState::TailCutOff;
    }
    return StoreState::Sound;
}

bool isReadOnlyHost(const std::filesystem::path& folder)
{
    struct statvfs host{};
    std::filesystem::path there = folder;
    while (::statvfs(there.c_str(), &host) != 0) {
        if (errno != ENOENT || !there.has_relative_path()) {
            return false;
        }
        there = there.parent_path();
    }
    if ((host.f_flag & ST_RDONLY) != 0) {
        return true;
    }
    // After an error of their disk some file systems refuse every change without saying that they are
    // read-only.
    const FileDescriptor trial(::open(there.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600));
    return !trial && errno == EROFS;
}

std::string readOnlyHostWords()
{
    return "This computer's own disk takes no changes (it is mounted read-only), so the drive takes none "
           "either. Restart this computer; if that does not help, have its disk checked.";
}

StoreIdentity compareIdentity(const std::string& uuid, std::uint64_t generation, const Superblock& found)
{
    // What the kernel tells of a mounted volume may be two ahead of what a crash leaves on the disk.
    constexpr std::uint64_t kNotYetWritten = 2;
    if (!uuid.empty() && uuid != found.uuid) {
        return StoreIdentity::Other;
    }
    return !uuid.empty() && found.generation + kNotYetWritten < generation ? StoreIdentity::Older
                                                                           : StoreIdentity::Same;
}

std::string otherStoreWords()
{
    return "The drive's store was exchanged: it holds another volume than the one that was used here last. "
           "Put "
           "the right file back, or, if this one is meant, run: ferrobank check --acknowledge";
}

std::string olderStoreWords()
{
    return "The drive's store is older than the one that was used here last: what was changed in between is "
           "not in it.";
}

void markReadingDue(const Paths& paths, const std::string& reason)
{
    if (::access(paths.readingDue.c_str(), F_OK) != 0) {
        replaceFile(paths.readingDue, reason, Durability::Synced);
    }
}

void restoreSuperblock(const Paths& paths, const Log& log)
{
    const std::optional<std::size_t> mirror = bestMirror(paths.image);
    if (!mirror) {
        return;
    }
    const std::uint64_t place = kSuperblockPlaces[*mirror];
    const std::string copy = "the copy at " + displayBinary(place);
    log.write("The first superblock of the drive's store is damaged; trying " + copy + ".");
    const ProgramOutcome check = runSystemProgram(
        "btrfs", {"check", "--readonly", "--super", std::to_string(*mirror), paths.image.string()},
        kStructureCheckLimit);
    if (!check.succeeded()) {
        log.write("btrfs check by " + copy + " ended with " + std::to_string(check.status) + ":\n" +
                  check.output);
        throw Failure(
            "The first superblock of the drive's store is damaged, and by " + copy +
                " its structures cannot be checked or are damaged too. Nothing was changed; the log "
                "holds what the check found.",
            "store-damaged");
    }
    markReadingDue(paths, "superblock");
    keepDamaged(paths);
    const ProgramOutcome repair = runSystemProgram(
        "btrfs", {"rescue", "super-recover", "-y", paths.image.string()}, kStructureCheckLimit);
    if (!readWholeSuperblock(paths.image, 0)) {
        log.write("btrfs rescue super-recover ended with " + std::to_string(repair.status) + ":\n" +
                  repair.output);
        throw Failure(
            "The first superblock of the drive's store is damaged and could not be made again from " + copy +
                ". The log holds what was found.",
            "store-damaged");
    }
    log.write("The first superblock was made again from " + copy + "; all files are read once now.");
}

void restoreLength(const Paths& paths, const Log& log)
{
    const std::optional<Superblock> superblock = readSuperblock(paths.image);
    if (!superblock) {
        return;
    }
    markReadingDue(paths, "cut-short");
    if (::truncate(paths.image.c_str(), static_cast<off_t>(superblock->totalBytes)) != 0) {
        throw systemFailure("Cannot give the drive's store its length back", errno);
    }
    log.write("The store had been cut short; its length is back at " +
              std::to_string(superblock->totalBytes) + " bytes, and all files are read once now.");
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
