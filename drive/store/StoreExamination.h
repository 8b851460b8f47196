#pragma once

#include "platform/Log.h"
#include "platform/Paths.h"
#include "store/Superblock.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace ferrobank::drive {

/// What an examination of the store found when nothing forbids its use.
enum class StoreState { Missing, Sound, TailCutOff, FirstSuperblockDamaged };

/// Looks at the store before an attach and says what is there. Touches no data. Throws Failure with the
/// sentence for the user:
///
/// | case                                            | code            |
/// |-------------------------------------------------|-----------------|
/// | image is a link, no file, or another user's     | store-foreign   |
/// | image gone though the drive had been used       | store-missing   |
/// | image holds no Btrfs superblock, nor a copy     | store-damaged   |
/// | host file system is a network or FUSE one       | store-network   |
/// | host file system is read-only                   | host-read-only  |
[[nodiscard]] StoreState examineStore(const Paths& paths);

/// Refuses kinds of host file system that cannot hold the store safely; `type` is statfs's f_type.
[[nodiscard]] bool isNetworkFileSystem(std::int64_t type);

/// Whether the file system of the nearest folder that is there takes no changes. Tries it, with a file that
/// has no name.
[[nodiscard]] bool isReadOnlyHost(const std::filesystem::path& folder);

/// The sentence for that case.
[[nodiscard]] std::string readOnlyHostWords();

/// What the last used volume and the one in the image have to do with each other.
///
/// | value | means                                                                        |
/// |-------|------------------------------------------------------------------------------|
/// | Same  | the same volume, no further back than a crash leaves it                      |
/// | Older | the same volume as it was earlier: a copy put back, or changes that were lost |
/// | Other | another volume                                                               |
enum class StoreIdentity { Same, Older, Other };

/// `uuid` and `generation` were recorded when the drive was last used; an empty uuid is any volume's.
[[nodiscard]] StoreIdentity compareIdentity(const std::string& uuid, std::uint64_t generation,
                                            const Superblock& found);

/// The sentences for a store that is not the one that was used last.
[[nodiscard]] std::string otherStoreWords();
[[nodiscard]] std::string olderStoreWords();

/// Puts a whole copy of the superblock into the place of the damaged first one, after the structure check
/// found nothing wrong by that copy. The damaged one is kept beside the store. All files have to be read once
/// afterwards. Throws Failure ("store-damaged"); the image is as it was then.
void restoreSuperblock(const Paths& paths, const Log& log);

/// Leaves word, over a crash too, that every file has to be read once. A reason that is there stays.
void markReadingDue(const Paths& paths, const std::string& reason);

/// Gives an image that was cut short its length back. Nothing tells whether only the unused tail was lost:
/// the structure check must follow, and every file has to be read once.
void restoreLength(const Paths& paths, const Log& log);

/// Runs `btrfs check --readonly` on the detached image. Throws Failure ("store-damaged") when it finds
/// errors; the log then holds its output. A check that takes longer than two minutes or is not installed
/// counts as passed and is logged.
void checkStructures(const Paths& paths, const Log& log);

} // namespace ferrobank::drive
