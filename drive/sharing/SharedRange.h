#pragma once

#include "sharing/Throttle.h"

#include <cstdint>

namespace ferrobank::drive {

/// A stretch of one open file.
struct FileRange {
    int file = -1;
    std::uint64_t offset = 0;
};

/// The file system keeps files of up to this many bytes among their names (the default of Btrfs's
/// `max_inline`), and files of up to a block too if they become as small by compression.
inline constexpr std::uint64_t kLargestInline = 2048;

/// Whether a small file lies among the names, where it takes no block and has none to share.
[[nodiscard]] bool isInline(int file);

/// How an attempt to share a stretch ended.
///
/// | end       | shared       | means                                                             |
/// |-----------|--------------|-------------------------------------------------------------------|
/// | Same      | whole length | both files now use the same blocks                                |
/// | Differs   | part of it   | the contents differ (or changed meanwhile); nothing wrong with that |
/// | Refused   | part of it   | the kernel does not share this file (`error`), others may go on   |
/// | Failed    | part of it   | the volume takes no more changes (`error`): the pass must end     |
/// | Cancelled | part of it   | stop was requested between two steps                              |
struct ShareOutcome {
    enum class End { Same, Differs, Refused, Failed, Cancelled };

    End end = End::Same;
    std::uint64_t shared = 0;
    int error = 0;
};

/// Lets `target` use the blocks of `source` for `length` bytes, in steps of 16 MiB with the throttle's
/// pauses. The kernel locks both files and compares every byte before it does so; contents and times of both
/// files never change. Both may be open for reading only, if the caller owns them.
ShareOutcome shareRange(FileRange source, FileRange target, std::uint64_t length, Throttle& throttle);

/// Whether first, middle and last block of the two stretches lie at the same place on the device already.
/// Answers no when in doubt.
[[nodiscard]] bool sharesAlready(FileRange one, FileRange other, std::uint64_t length);

/// Where the block at `range` lies on the device, or 0 for a hole, inline data or data not yet written. Equal
/// numbers other than 0 at equal offsets mean the same block.
[[nodiscard]] std::uint64_t devicePlace(FileRange range);

} // namespace ferrobank::drive
