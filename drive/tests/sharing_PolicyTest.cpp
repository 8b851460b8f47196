#include "sharing/ScanConditions.h"
#include "sharing/Throttle.h"
#include "testing/DriveFiles.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <thread>

namespace ferrobank::drive {

namespace {

using testing::TemporaryFolder;
using testing::writeFile;

ScanConditions good()
{
    return {0.5, 2, true, std::nullopt, Seconds{60}};
}

TEST(ScanWait, quietComputerOnMainsWaitsForNothing)
{
    EXPECT_EQ(scanWait(good()), ScanWait::Nothing);
}

TEST(ScanWait, changeAMomentAgoIsWaitedForUntilThePassIsOverdue)
{
    ScanConditions conditions = good();
    conditions.sinceLastChange = Seconds{29.9};
    EXPECT_EQ(scanWait(conditions), ScanWait::Quiet);
    conditions.urgency = Urgency::Overdue;
    EXPECT_EQ(scanWait(conditions), ScanWait::Nothing);
}

TEST(ScanWait, loadOfAllCoresIsWaitedForUntilThePassIsLongOverdue)
{
    ScanConditions conditions = good();
    conditions.load = 2;
    for (const Urgency urgency : {Urgency::None, Urgency::Overdue}) {
        conditions.urgency = urgency;
        EXPECT_EQ(scanWait(conditions), ScanWait::Load);
    }
    conditions.urgency = Urgency::LongOverdue;
    EXPECT_EQ(scanWait(conditions), ScanWait::Nothing);
    conditions.urgency = Urgency::None;
    conditions.load = 1.99;
    EXPECT_EQ(scanWait(conditions), ScanWait::Nothing);
}

TEST(ScanWait, onBatteryMoreThanHalfMustBeLeftHoweverUrgentItIs)
{
    ScanConditions conditions = good();
    conditions.onMains = false;
    conditions.urgency = Urgency::LongOverdue;
    conditions.battery = 50;
    EXPECT_EQ(scanWait(conditions), ScanWait::Power);
    conditions.battery = 51;
    EXPECT_EQ(scanWait(conditions), ScanWait::Nothing);
    conditions.battery = 5;
    conditions.onMains = true;
    EXPECT_EQ(scanWait(conditions), ScanWait::Nothing);
}

TEST(Urgency, growsWithTheTimeThatSomethingWaitsAndFirstForTheFirstPass)
{
    constexpr Seconds kMinute{60};
    EXPECT_EQ(urgencyOf(9.9 * kMinute, FirstPass::Yes, LastPassOld::No), Urgency::None);
    EXPECT_EQ(urgencyOf(10 * kMinute, FirstPass::Yes, LastPassOld::No), Urgency::Overdue);
    EXPECT_EQ(urgencyOf(59.9 * kMinute, FirstPass::No, LastPassOld::Yes), Urgency::None);
    EXPECT_EQ(urgencyOf(60 * kMinute, FirstPass::No, LastPassOld::No), Urgency::Overdue);
    EXPECT_EQ(urgencyOf(60 * kMinute, FirstPass::No, LastPassOld::Yes), Urgency::LongOverdue);
    EXPECT_EQ(urgencyOf(240 * kMinute, FirstPass::Yes, LastPassOld::No), Urgency::LongOverdue);
}

TEST(CurrentConditions, areReadFromTheKernelsFiles)
{
    const TemporaryFolder folder;
    writeFile(folder.path() / "load", "1.25 0.90 0.80 2/300 4711\n");
    writeFile(folder.path() / "supplies/AC/type", "Mains\n");
    writeFile(folder.path() / "supplies/AC/online", "0\n");
    writeFile(folder.path() / "supplies/BAT0/type", "Battery\n");
    writeFile(folder.path() / "supplies/BAT0/capacity", "80\n");
    writeFile(folder.path() / "supplies/BAT1/type", "Battery\n");
    writeFile(folder.path() / "supplies/BAT1/capacity", "40\n");
    writeFile(folder.path() / "supplies/mouse/type", "Battery\n");
    writeFile(folder.path() / "supplies/mouse/scope", "Device\n");
    writeFile(folder.path() / "supplies/mouse/capacity", "3\n");
    const ScanConditions conditions = currentConditions(folder.path() / "load", folder.path() / "supplies");
    EXPECT_EQ(conditions.load, 1.25);
    EXPECT_FALSE(conditions.onMains);
    EXPECT_EQ(conditions.battery, 40);
    EXPECT_GE(conditions.cores, 1U);
}

TEST(CurrentConditions, computerWithoutSuppliesIsOnMains)
{
    const TemporaryFolder folder;
    const ScanConditions conditions = currentConditions(folder.path() / "none", folder.path() / "none");
    EXPECT_TRUE(conditions.onMains);
    EXPECT_EQ(conditions.battery, std::nullopt);
    EXPECT_EQ(conditions.load, 0);
}

void burn(Seconds time)
{
    const auto start = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - start < time) {
    }
}

TEST(Throttle, keepsTheThreadAtItsShare)
{
    const auto start = std::chrono::steady_clock::now();
    Throttle throttle(0.25, {});
    for (int step = 0; step < 20; ++step) {
        burn(Seconds{0.01});
        EXPECT_TRUE(throttle.goOn());
    }
    const Seconds wall = std::chrono::steady_clock::now() - start;
    EXPECT_GE(wall / throttle.processorTime(), 3.5);
}

TEST(Throttle, requestToStopEndsThePause)
{
    std::stop_source stop;
    Throttle throttle(0.001, stop.get_token());
    burn(Seconds{0.02});
    std::thread stopper([&] { stop.request_stop(); });
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(throttle.goOn());
    EXPECT_LT(Seconds(std::chrono::steady_clock::now() - start), Seconds{10});
    stopper.join();
    EXPECT_TRUE(throttle.stopped());
    EXPECT_FALSE(throttle.goOn());
}

} // namespace

} // namespace ferrobank::drive
