#include "figures/IdlePriority.h"
#include "figures/Pacing.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <thread>

namespace ferrobank::drive {

namespace {

LastWalk walked(double duration, double ago, std::uint64_t generation = 7)
{
    return {generation, Seconds{duration}, Seconds{ago}};
}

TEST(Pacing, pauseAfterShortWalkIsAQuarterOfAMinute)
{
    EXPECT_EQ(pauseAfterWalk(Seconds{0}), Seconds{15});
    EXPECT_EQ(pauseAfterWalk(Seconds{0.2}), Seconds{15});
}

TEST(Pacing, pauseAfterLongWalkKeepsWalkingAtTwoPercent)
{
    EXPECT_EQ(pauseAfterWalk(Seconds{3}), Seconds{150});
    EXPECT_EQ(pauseAfterWalk(Seconds{60}), Seconds{3000});
}

TEST(Pacing, firstWalkMayStartAtOnce)
{
    EXPECT_TRUE(mayWalk(std::nullopt, 0));
}

TEST(Pacing, unchangedVolumeIsNeverWalkedAgain)
{
    EXPECT_FALSE(mayWalk(walked(0.1, 1e9), 7));
}

TEST(Pacing, changedVolumeIsWalkedAfterThePauseOnly)
{
    EXPECT_FALSE(mayWalk(walked(0.1, 14.9), 8));
    EXPECT_TRUE(mayWalk(walked(0.1, 15), 8));
    EXPECT_FALSE(mayWalk(walked(3, 149), 8));
    EXPECT_TRUE(mayWalk(walked(3, 150), 8));
}

TEST(Pacing, generationThatWentBackCountsAsChanged)
{
    EXPECT_TRUE(mayWalk(walked(0.1, 60), 6));
}

TEST(Pacing, workerBelowItsShareNeedsNoPause)
{
    EXPECT_EQ(pauseForShare(Seconds{1}, Seconds{4}, 0.25), Seconds{0});
    EXPECT_EQ(pauseForShare(Seconds{0}, Seconds{0}, 0.25), Seconds{0});
}

TEST(Pacing, workerAboveItsSharePausesUntilItIsBack)
{
    EXPECT_EQ(pauseForShare(Seconds{1}, Seconds{1}, 0.25), Seconds{3});
    EXPECT_EQ(pauseForShare(Seconds{0.5}, Seconds{0.75}, 0.5), Seconds{0.25});
}

TEST(Pacing, fullShareNeverPauses)
{
    EXPECT_EQ(pauseForShare(Seconds{5}, Seconds{5}, 1), Seconds{0});
}

TEST(IdlePriority, concernsTheCallingThreadOnly)
{
    const int before = ::sched_getscheduler(0);
    int inThread = -1;
    IdlePriority granted;
    std::thread([&] {
        granted = useIdlePriority();
        inThread = ::sched_getscheduler(0);
    }).join();
    EXPECT_TRUE(granted.processor);
    EXPECT_EQ(inThread, SCHED_IDLE);
    EXPECT_EQ(::sched_getscheduler(0), before);
}

} // namespace

} // namespace ferrobank::drive
