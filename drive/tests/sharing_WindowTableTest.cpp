#include "sharing/WindowTable.h"

#include <gtest/gtest.h>

#include <vector>

namespace ferrobank::drive {

namespace {

std::vector<std::uint64_t> keysOf(const std::vector<std::uint64_t>& blocks)
{
    WindowRoller roller;
    std::vector<std::uint64_t> keys;
    for (const std::uint64_t block : blocks) {
        keys.push_back(roller.push(block, block == 0));
    }
    return keys;
}

std::vector<std::uint64_t> sequence(std::uint64_t first, std::size_t count)
{
    std::vector<std::uint64_t> blocks;
    for (std::size_t number = 0; number < count; ++number) {
        blocks.push_back((first + number) * 0x9e3779b97f4a7c15U);
    }
    return blocks;
}

TEST(WindowRoller, hasNoKeyBeforeSixteenBlocks)
{
    const auto keys = keysOf(sequence(1, 17));
    for (std::size_t number = 0; number < 15; ++number) {
        EXPECT_EQ(keys[number], 0U);
    }
    EXPECT_NE(keys[15], 0U);
    EXPECT_NE(keys[16], 0U);
    EXPECT_NE(keys[15], keys[16]);
}

TEST(WindowRoller, keyDependsOnItsSixteenBlocksOnly)
{
    auto one = sequence(1000, 7);
    auto other = sequence(2000, 23);
    const auto common = sequence(1, 20);
    one.insert(one.end(), common.begin(), common.end());
    other.insert(other.end(), common.begin(), common.end());
    const auto keysOfOne = keysOf(one);
    const auto keysOfOther = keysOf(other);
    for (std::size_t number = 0; number < 5; ++number) {
        EXPECT_EQ(keysOfOne[7 + 15 + number], keysOfOther[23 + 15 + number]);
    }
}

TEST(WindowRoller, orderOfBlocksMatters)
{
    auto turned = sequence(1, 16);
    std::swap(turned[3], turned[9]);
    EXPECT_NE(keysOf(turned)[15], keysOf(sequence(1, 16))[15]);
}

TEST(WindowRoller, windowOfZerosHasNoKey)
{
    std::vector<std::uint64_t> blocks(20, 0);
    blocks.push_back(7);
    const auto keys = keysOf(blocks);
    EXPECT_EQ(keys[15], 0U);
    EXPECT_EQ(keys[19], 0U);
    EXPECT_NE(keys[20], 0U);
}

TEST(WindowRoller, resetForgetsEverything)
{
    WindowRoller roller;
    for (const std::uint64_t block : sequence(500, 40)) {
        roller.push(block, false);
    }
    roller.reset();
    std::uint64_t last = 0;
    for (const std::uint64_t block : sequence(1, 16)) {
        last = roller.push(block, false);
    }
    EXPECT_EQ(last, keysOf(sequence(1, 16))[15]);
}

TEST(WindowPlan, smallDriveKeepsEveryWindow)
{
    const WindowPlan plan = planWindows(std::uint64_t{10} << 30U, std::size_t{32} << 20U);
    EXPECT_EQ(plan.step, kWindowBytes);
    EXPECT_LE(plan.slots * 16, std::size_t{32} << 20U);
    EXPECT_GE(plan.slots * 3 / 4, (std::uint64_t{10} << 30U) / kWindowBytes);
}

TEST(WindowPlan, largeDriveIsThinnedAndStaysWithinMemory)
{
    const std::size_t memory = std::size_t{32} << 20U;
    std::uint64_t lastStep = 0;
    for (std::uint64_t bytes = std::uint64_t{1} << 30U; bytes <= std::uint64_t{8} << 40U; bytes *= 2) {
        const WindowPlan plan = planWindows(bytes, memory);
        EXPECT_LE(plan.slots * 16, memory);
        EXPECT_GE(plan.step, lastStep);
        EXPECT_EQ(plan.step % kWindowBytes, 0U);
        EXPECT_LE(bytes / plan.step, plan.slots * 3 / 4);
        lastStep = plan.step;
    }
    EXPECT_GT(lastStep, kWindowBytes);
}

TEST(WindowPlan, emptyDriveHasASmallTable)
{
    EXPECT_EQ(planWindows(0, std::size_t{32} << 20U).slots, 1024U);
}

TEST(WindowTable, findsTheFirstPlaceOfAKey)
{
    WindowTable table({kWindowBytes, 1024});
    table.insert(42, {1, 3 * kWindowBytes});
    table.insert(42, {2, 0});
    const auto place = table.find(42);
    ASSERT_TRUE(place);
    EXPECT_EQ(place->file, 1U);
    EXPECT_EQ(place->offset, 3 * kWindowBytes);
    EXPECT_FALSE(table.find(43));
}

TEST(WindowTable, keysThatCollideAreToldApart)
{
    WindowTable table({kWindowBytes, 1024});
    for (std::uint32_t number = 0; number < 100; ++number) {
        table.insert(1 + std::uint64_t{number} * 1024, {number, 0});
    }
    for (std::uint32_t number = 0; number < 100; ++number) {
        const auto place = table.find(1 + std::uint64_t{number} * 1024);
        ASSERT_TRUE(place);
        EXPECT_EQ(place->file, number);
    }
}

TEST(WindowTable, takesNoMoreThanItHasRoomFor)
{
    WindowTable table({kWindowBytes, 1024});
    for (std::uint64_t key = 1; key <= 5000; ++key) {
        table.insert(key * 0x9e3779b97f4a7c15U, {1, 0});
    }
    EXPECT_EQ(table.size(), 768U);
    EXPECT_TRUE(table.find(0x9e3779b97f4a7c15U));
    EXPECT_FALSE(table.find(5000 * 0x9e3779b97f4a7c15U));
}

} // namespace

} // namespace ferrobank::drive
