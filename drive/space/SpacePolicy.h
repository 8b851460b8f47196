#pragma once

#include "state/State.h"

#include <cstdint>

namespace ferrobank::drive {

/// The figures that the space guard decides from, all in bytes.
struct SpaceFigures {
    /// Size of the file system that holds the store, and what it has left for this user.
    std::uint64_t hostTotal = 0;
    std::uint64_t hostFree = 0;
    /// What the kernel may keep in memory before it must write: programs can get this far ahead of the disk.
    std::uint64_t dirtyLimit = 0;
    std::uint64_t driveFree = 0;
    std::uint64_t guard = 0;
};

/// Bytes of the host that the drive never uses: 4 GiB, 2 % of the disk or the dirty limit, whichever is most,
/// but never more than 10 % of the disk.
[[nodiscard]] std::uint64_t reserveFor(const SpaceFigures& figures);

/// How large the guard file should be, so that the drive's free space is what the host has beyond the
/// reserve.
[[nodiscard]] std::uint64_t guardTarget(const SpaceFigures& figures);

/// Whether the guard is so far off its target that it must be corrected now: 512 MiB, or an eighth of the
/// reserve on a small disk, and at once when the drive offers more than the host can take.
[[nodiscard]] bool needsCorrection(const SpaceFigures& figures);

/// What to give the guard for `guardTarget`: whole steps of 256 MiB, of 4 MiB on a small disk, and rather too
/// much than too little.
[[nodiscard]] std::uint64_t guardInSteps(const SpaceFigures& figures);

/// Low below twice the reserve, critical below it.
[[nodiscard]] SpaceLevel levelFor(const SpaceFigures& figures);

/// Seconds to the next look: five, or one when less than three reserves are left.
[[nodiscard]] int pollSeconds(const SpaceFigures& figures);

/// What to do about the really written reserve file beside the image.
enum class HostReserveAct { Keep, Make, Drop };

[[nodiscard]] HostReserveAct hostReserveAct(std::uint64_t hostFree, std::uint64_t hostTotal, bool present);

/// Seconds until the reserve is tried again after `failures` attempts in a row came to nothing: a minute,
/// doubled each time up to an hour. Each attempt writes the whole of it.
[[nodiscard]] int reservePauseSeconds(int failures);

/// Size of that file: 512 MiB, less on a small disk.
[[nodiscard]] std::uint64_t hostReserveBytes(std::uint64_t hostTotal);

} // namespace ferrobank::drive
