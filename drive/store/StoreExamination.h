#pragma once

#include "platform/Log.h"
#include "platform/Paths.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace ferrobank::drive {

/// What an examination of the store found when nothing forbids its use.
enum class StoreState { Missing, Sound, TailCutOff };

/// Looks at the store before an attach and says what is there. Touches no data. Throws Failure with the
/// sentence for the user:
///
/// | case                                            | code            |
/// |-------------------------------------------------|-----------------|
/// | image is a link, no file, or another user's     | store-foreign   |
/// | image gone though the drive had been used       | store-missing   |
/// | image holds no Btrfs superblock                 | store-damaged   |
/// | host file system is a network or FUSE one       | store-network   |
[[nodiscard]] StoreState examineStore(const Paths& paths);

/// Refuses kinds of host file system that cannot hold the store safely; `type` is statfs's f_type.
[[nodiscard]] bool isNetworkFileSystem(std::int64_t type);

/// Gives an image that lost part of its unused tail its length back. Whether only the tail was lost is for
/// the structure check that must follow.
void restoreLength(const Paths& paths, const Log& log);

/// Runs `btrfs check --readonly` on the detached image. Throws Failure ("store-damaged") when it finds
/// errors; the log then holds its output. A check that takes longer than two minutes or is not installed
/// counts as passed and is logged.
void checkStructures(const Paths& paths, const Log& log);

} // namespace ferrobank::drive
