#pragma once

#include "platform/Log.h"
#include "platform/Paths.h"

#include <cstdint>
#include <filesystem>

namespace ferrobank::drive {

/// How long the image of a drive is on a disk of `hostTotal` bytes: as long as that disk, in whole GiB, so
/// that the drive's size says what people expect, but no less than 16 GiB. What the disk has not got is kept
/// from programs by the space guard, which is the smaller and the drive the quicker, the less the two differ.
[[nodiscard]] std::uint64_t storeLength(std::uint64_t hostTotal);

/// Bytes of the file system that holds `folder`, used ones included. Throws Failure.
[[nodiscard]] std::uint64_t hostBytes(const std::filesystem::path& folder);

/// Makes the image as long as its disk has become, which costs nothing; it is never made shorter. Only while
/// no loop device uses it. A disk that refuses leaves it as it was, with a line in the log.
void lengthenStore(const Paths& paths, const Log& log);

/// Lets the mounted volume use the whole length of its image, which needs root: `/dev/loop…` must be as long
/// already, so the drive has to be mounted anew after `lengthenStore`. For others a line in the log says what
/// an administrator can do; the drive stays as large as it was.
void growVolume(const Paths& paths, const std::filesystem::path& mountPoint, const Log& log);

} // namespace ferrobank::drive
