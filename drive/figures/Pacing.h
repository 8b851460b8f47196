#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace ferrobank::drive {

using Seconds = std::chrono::duration<double>;

/// The last walk over all files: which state of the volume it saw and what it cost.
struct LastWalk {
    std::uint64_t generation = 0;
    Seconds duration{};
    Seconds sinceItsEnd{};
};

/// How long to leave the files alone after a walk: a quarter of a minute at least, and so long that walking
/// takes no more than 2 % of the time.
[[nodiscard]] Seconds pauseAfterWalk(Seconds duration);

/// Whether the figures may be walked again now. Nothing changed, nothing to walk; no walk yet, walk at once.
[[nodiscard]] bool mayWalk(const std::optional<LastWalk>& last, std::uint64_t generationNow);

/// How long a worker must pause after it used `processor` seconds within `wall` seconds, so that it stays at
/// `share` of one core on average. 0 when it is below.
[[nodiscard]] Seconds pauseForShare(Seconds processor, Seconds wall, double share);

} // namespace ferrobank::drive
