#include "figures/Pacing.h"

#include <algorithm>

namespace ferrobank::drive {

namespace {

constexpr Seconds kShortestPause{15};
constexpr double kPausePerWalk = 50;

} // namespace

Seconds pauseAfterWalk(Seconds duration)
{
    return std::max(kShortestPause, duration * kPausePerWalk);
}

bool mayWalk(const std::optional<LastWalk>& last, std::uint64_t generationNow)
{
    if (!last) {
        return true;
    }
    return last->generation != generationNow && last->sinceItsEnd >= pauseAfterWalk(last->duration);
}

Seconds pauseForShare(Seconds processor, Seconds wall, double share)
{
    return std::max(Seconds{0}, processor / share - wall);
}

} // namespace ferrobank::drive
