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

TEST(MayScan, quietComputerOnMainsMay)
{
    EXPECT_TRUE(mayScan(good()));
}

TEST(MayScan, changeLessThanAMinuteAgoForbidsIt)
{
    ScanConditions conditions = good();
    conditions.sinceLastChange = Seconds{59.9};
    EXPECT_FALSE(mayScan(conditions));
}

TEST(MayScan, loadOfAllCoresForbidsIt)
{
    ScanConditions conditions = good();
    conditions.load = 2;
    EXPECT_FALSE(mayScan(conditions));
    conditions.load = 1.99;
    EXPECT_TRUE(mayScan(conditions));
}

TEST(MayScan, onBatteryMoreThanHalfMustBeLeft)
{
    ScanConditions conditions = good();
    conditions.onMains = false;
    conditions.battery = 50;
    EXPECT_FALSE(mayScan(conditions));
    conditions.battery = 51;
    EXPECT_TRUE(mayScan(conditions));
    conditions.battery = 5;
    conditions.onMains = true;
    EXPECT_TRUE(mayScan(conditions));
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
