#include "space/SpacePolicy.h"

#include <algorithm>

namespace ferrobank::drive {

namespace {

constexpr std::uint64_t kMiB = 1024 * 1024;
constexpr std::uint64_t kGiB = 1024 * kMiB;
constexpr std::uint64_t kLeastReserve = 4 * kGiB;
constexpr std::uint64_t kTolerance = 512 * kMiB;
constexpr std::uint64_t kHostReserve = 512 * kMiB;
constexpr std::uint64_t kDropBelow = 256 * kMiB;
constexpr std::uint64_t kMakeAbove = 4 * kGiB;
constexpr std::uint64_t kLargeStep = 256 * kMiB;
constexpr std::uint64_t kSmallStep = 4 * kMiB;
constexpr int kFirstPause = 60;
constexpr int kLongestPause = 60 * 60;

std::uint64_t roundedUp(std::uint64_t bytes, std::uint64_t step)
{
    return (bytes + step - 1) / step * step;
}

std::uint64_t toleranceFor(const SpaceFigures& figures)
{
    return std::min(kTolerance, reserveFor(figures) / 8);
}

} // namespace

std::uint64_t reserveFor(const SpaceFigures& figures)
{
    const std::uint64_t wanted = std::max({kLeastReserve, figures.hostTotal / 50, figures.dirtyLimit});
    return std::min(wanted, figures.hostTotal / 10);
}

std::uint64_t guardTarget(const SpaceFigures& figures)
{
    const std::uint64_t reserve = reserveFor(figures);
    const std::uint64_t usable = figures.hostFree > reserve ? figures.hostFree - reserve : 0;
    const std::uint64_t offered = figures.driveFree + figures.guard;
    return offered > usable ? offered - usable : 0;
}

bool needsCorrection(const SpaceFigures& figures)
{
    const std::uint64_t target = guardTarget(figures);
    const std::uint64_t tolerance = toleranceFor(figures);
    const std::uint64_t off = target > figures.guard ? target - figures.guard : figures.guard - target;
    return off > tolerance;
}

std::uint64_t guardInSteps(const SpaceFigures& figures)
{
    // A step must be well below what is tolerated, or the guard would go to and fro around its target.
    return roundedUp(guardTarget(figures), toleranceFor(figures) >= 2 * kLargeStep ? kLargeStep : kSmallStep);
}

int reservePauseSeconds(int failures)
{
    int pause = kFirstPause;
    for (int failure = 1; failure < failures && pause < kLongestPause; ++failure) {
        pause *= 2;
    }
    return std::min(pause, kLongestPause);
}

SpaceLevel levelFor(const SpaceFigures& figures)
{
    const std::uint64_t reserve = reserveFor(figures);
    if (figures.hostFree < reserve) {
        return SpaceLevel::Critical;
    }
    return figures.hostFree < 2 * reserve ? SpaceLevel::Low : SpaceLevel::Ok;
}

int pollSeconds(const SpaceFigures& figures)
{
    return figures.hostFree < 3 * reserveFor(figures) ? 1 : 5;
}

std::uint64_t hostReserveBytes(std::uint64_t hostTotal)
{
    return std::min(kHostReserve, hostTotal / 50);
}

HostReserveAct hostReserveAct(std::uint64_t hostFree, std::uint64_t hostTotal, bool present)
{
    // On a small disk the same proportions hold: it is dropped at half its size and made with room for eight.
    const std::uint64_t size = hostReserveBytes(hostTotal);
    if (present && hostFree < std::min(kDropBelow, size / 2)) {
        return HostReserveAct::Drop;
    }
    if (!present && hostFree > std::min(kMakeAbove, size * 8)) {
        return HostReserveAct::Make;
    }
    return HostReserveAct::Keep;
}

} // namespace ferrobank::drive
