#include "space/SpacePolicy.h"

#include <gtest/gtest.h>

namespace ferrobank::drive::testing {
namespace {

constexpr std::uint64_t kMiB = 1024 * 1024;
constexpr std::uint64_t kGiB = 1024 * kMiB;

SpaceFigures figures(std::uint64_t total, std::uint64_t free)
{
    return {.hostTotal = total, .hostFree = free, .dirtyLimit = 0, .driveFree = 8192 * kGiB, .guard = 0};
}

TEST(SpacePolicy, reserveIsTheLargestOfThreeButNeverMoreThanATenth)
{
    EXPECT_EQ(reserveFor(figures(100 * kGiB, 0)), 4 * kGiB);
    EXPECT_EQ(reserveFor(figures(1000 * kGiB, 0)), 20 * kGiB);
    EXPECT_EQ(reserveFor(figures(10 * kGiB, 0)), kGiB);
    SpaceFigures lazy = figures(100 * kGiB, 0);
    lazy.dirtyLimit = 6 * kGiB;
    EXPECT_EQ(reserveFor(lazy), 6 * kGiB);
    lazy.dirtyLimit = 60 * kGiB;
    EXPECT_EQ(reserveFor(lazy), 10 * kGiB);
}

TEST(SpacePolicy, guardLeavesTheDriveWhatTheHostHasBeyondTheReserve)
{
    const SpaceFigures all = figures(100 * kGiB, 54 * kGiB);
    EXPECT_EQ(guardTarget(all), 8192 * kGiB - 50 * kGiB);
    SpaceFigures settled = all;
    settled.guard = guardTarget(all);
    settled.driveFree = all.driveFree - settled.guard;
    EXPECT_EQ(settled.driveFree, 50 * kGiB);
    EXPECT_EQ(guardTarget(settled), settled.guard);
    EXPECT_FALSE(needsCorrection(settled));
}

TEST(SpacePolicy, hostBelowItsReserveLeavesTheDriveNothing)
{
    EXPECT_EQ(guardTarget(figures(100 * kGiB, kGiB)), 8192 * kGiB);
}

TEST(SpacePolicy, guardGivesWayWhenTheDriveIsSmallerThanTheHost)
{
    SpaceFigures small = figures(1000 * kGiB, 900 * kGiB);
    small.driveFree = 10 * kGiB;
    small.guard = 5 * kGiB;
    EXPECT_EQ(guardTarget(small), 0U);
    EXPECT_TRUE(needsCorrection(small));
}

TEST(SpacePolicy, smallDifferencesAreLeftAlone)
{
    SpaceFigures settled = figures(100 * kGiB, 54 * kGiB);
    settled.guard = guardTarget(settled);
    settled.driveFree -= settled.guard;
    settled.hostFree -= 500 * kMiB;
    EXPECT_FALSE(needsCorrection(settled));
    settled.hostFree -= 20 * kMiB;
    EXPECT_TRUE(needsCorrection(settled));
}

TEST(SpacePolicy, guardMovesInCoarseStepsThatStayWithinWhatIsTolerated)
{
    SpaceFigures all = figures(100 * kGiB, 54 * kGiB + 100 * kMiB);
    all.driveFree = 100 * kGiB;
    EXPECT_EQ(guardInSteps(all) % (256 * kMiB), 0U);
    EXPECT_GE(guardInSteps(all), guardTarget(all));
    SpaceFigures settled = all;
    settled.guard = guardInSteps(all);
    settled.driveFree -= settled.guard;
    EXPECT_FALSE(needsCorrection(settled));
    // On a small disk a large step would be more than what is tolerated.
    SpaceFigures small = figures(4 * kGiB, kGiB);
    small.driveFree = 16 * kGiB;
    EXPECT_LT(guardInSteps(small) - guardTarget(small), 4 * kMiB);
}

TEST(SpacePolicy, reserveThatCannotBeMadeIsTriedEverMoreRarely)
{
    EXPECT_EQ(reservePauseSeconds(1), 60);
    EXPECT_EQ(reservePauseSeconds(2), 120);
    EXPECT_EQ(reservePauseSeconds(6), 1920);
    EXPECT_EQ(reservePauseSeconds(7), 3600);
    EXPECT_EQ(reservePauseSeconds(1'000'000), 3600);
}

TEST(SpacePolicy, levelsAndPollingFollowTheReserve)
{
    EXPECT_EQ(levelFor(figures(100 * kGiB, 9 * kGiB)), SpaceLevel::Ok);
    EXPECT_EQ(levelFor(figures(100 * kGiB, 7 * kGiB)), SpaceLevel::Low);
    EXPECT_EQ(levelFor(figures(100 * kGiB, 3 * kGiB)), SpaceLevel::Critical);
    EXPECT_EQ(pollSeconds(figures(100 * kGiB, 13 * kGiB)), 5);
    EXPECT_EQ(pollSeconds(figures(100 * kGiB, 11 * kGiB)), 1);
}

TEST(SpacePolicy, hostReserveIsDroppedInNeedAndMadeAgainWithRoom)
{
    constexpr std::uint64_t kDisk = 100 * kGiB;
    EXPECT_EQ(hostReserveBytes(kDisk), 512 * kMiB);
    EXPECT_EQ(hostReserveAct(200 * kMiB, kDisk, true), HostReserveAct::Drop);
    EXPECT_EQ(hostReserveAct(300 * kMiB, kDisk, true), HostReserveAct::Keep);
    EXPECT_EQ(hostReserveAct(3 * kGiB, kDisk, false), HostReserveAct::Keep);
    EXPECT_EQ(hostReserveAct(5 * kGiB, kDisk, false), HostReserveAct::Make);
    EXPECT_EQ(hostReserveAct(5 * kGiB, kDisk, true), HostReserveAct::Keep);
}

TEST(SpacePolicy, droppedReserveIsNotMadeAgainAtOnceOnASmallDisk)
{
    constexpr std::uint64_t kDisk = 3 * kGiB;
    const std::uint64_t size = hostReserveBytes(kDisk);
    EXPECT_LT(size, 64 * kMiB);
    EXPECT_EQ(hostReserveAct(size / 2 - 1, kDisk, true), HostReserveAct::Drop);
    EXPECT_EQ(hostReserveAct(size / 2 - 1 + size, kDisk, false), HostReserveAct::Keep);
}

} // namespace
} // namespace ferrobank::drive::testing
