#include "testing/ScanVolume.h"

#include <fcntl.h>
#include <unistd.h>

namespace ferrobank::drive {

namespace {

namespace fs = std::filesystem;
using testing::inventory;
using testing::kMiB;
using testing::plainBytes;
using testing::writeFile;

using Blocks = testing::ScanVolume;

TEST_F(Blocks, copiesOfTwoFilesThatHaveMuchInCommonAllShareIt)
{
    const std::string common = testing::randomBytes(8 * kMiB, 2);
    for (const char* name : {"a", "b", "c"}) {
        writeFile(root() / name, common + plainBytes(kMiB, 3));
        writeFile(root() / (std::string("other ") + name), plainBytes(kMiB, 4) + common);
    }
    const auto before = inventory(root());
    for (int pass = 0; pass < 3; ++pass) {
        EXPECT_TRUE(scan().complete());
    }
    EXPECT_EQ(inventory(root()), before);
    for (const std::string name : {"a", "b", "c"}) {
        for (const std::uint64_t place : {std::uint64_t{0}, 4 * kMiB, 8 * kMiB - 4096}) {
            EXPECT_TRUE(shares("a", name, place)) << name << place;
            EXPECT_TRUE(shares("a", "other " + name, place, place + kMiB)) << name << place;
        }
    }
    EXPECT_EQ(scan().bytesShared, 0U);
}

TEST_F(Blocks, blocksChangedHereAndThereCostLittleMoreThanThemselves)
{
    const std::string content = plainBytes(12 * kMiB, 1) + testing::randomBytes(12 * kMiB, 2);
    writeFile(root() / "a", content);
    const std::uint64_t alone = inUse();
    std::string changed = content;
    for (std::size_t place = 100 * 4096; place + 4096 < changed.size(); place += 150 * 4096) {
        changed.replace(place, 4096, plainBytes(4096, place));
    }
    writeFile(root() / "b", changed);
    const auto before = testing::inventory(root());
    EXPECT_TRUE(scan().complete());
    EXPECT_EQ(testing::inventory(root()), before);
    const std::uint64_t changedBytes = 40 * 4096;
    EXPECT_LT(inUse(), alone + changedBytes + 512 * 1024) << "the extents of the changed blocks are gone";
    EXPECT_EQ(scan().bytesShared, 0U) << "that was all";
    volume().unmount();
    volume().mount();
    EXPECT_EQ(testing::inventory(root()), before);
}

TEST_F(Blocks, insertedBlockMovesTheRestAndItIsStillShared)
{
    const std::string content = plainBytes(16 * kMiB, 1);
    writeFile(root() / "a", content);
    writeFile(root() / "b", content.substr(0, 5 * kMiB) + plainBytes(4096, 2) + content.substr(5 * kMiB));
    const auto before = inventory(root());
    const std::uint64_t used = inUse();
    const SharingResult result = scan();
    EXPECT_TRUE(result.complete()) << result.error;
    EXPECT_EQ(result.bytesShared, 16 * kMiB);
    EXPECT_TRUE(shares("a", "b", 0, 0));
    EXPECT_TRUE(shares("a", "b", 5 * kMiB - 4096, 5 * kMiB - 4096));
    EXPECT_TRUE(shares("a", "b", 5 * kMiB, 5 * kMiB + 4096));
    EXPECT_TRUE(shares("a", "b", 16 * kMiB - 4096, 16 * kMiB));
    EXPECT_EQ(inventory(root()), before);
    // What is shared compresses to a half.
    EXPECT_GT(used - inUse(), 8 * kMiB);
}

TEST_F(Blocks, stretchBelowOneWindowIsNotShared)
{
    const std::string common = plainBytes(60 * 1024, 1);
    writeFile(root() / "a", plainBytes(kMiB, 2) + common + plainBytes(kMiB, 3));
    writeFile(root() / "b", plainBytes(kMiB + 4096, 4) + common + plainBytes(kMiB, 5));
    const SharingResult result = scan();
    EXPECT_EQ(result.bytesShared, 0U);
}

TEST_F(Blocks, stretchMovedByBytesIsNotShared)
{
    const std::string content = plainBytes(4 * kMiB, 1);
    writeFile(root() / "a", content);
    writeFile(root() / "b", "777 bytes would do, too" + content);
    const auto before = inventory(root());
    EXPECT_EQ(scan().bytesShared, 0U);
    EXPECT_EQ(inventory(root()), before);
}

TEST_F(Blocks, repetitionInsideOneFileIsShared)
{
    const std::string part = plainBytes(4 * kMiB, 1);
    writeFile(root() / "a", part + plainBytes(kMiB, 2) + part);
    const auto before = inventory(root());
    const std::uint64_t used = inUse();
    EXPECT_EQ(scan().bytesShared, 4 * kMiB);
    EXPECT_TRUE(shares("a", "a", 0, 5 * kMiB));
    EXPECT_EQ(inventory(root()), before);
    EXPECT_GT(used - inUse(), 2 * kMiB);
}

TEST_F(Blocks, oneBlockOverAndOverIsSharedWithItself)
{
    const std::string block = plainBytes(4096, 1);
    std::string content;
    for (int count = 0; count < 1024; ++count) {
        content += block;
    }
    writeFile(root() / "a", content);
    const auto before = inventory(root());
    const std::uint64_t used = inUse();
    const SharingResult result = scan();
    EXPECT_TRUE(result.complete()) << result.error;
    EXPECT_GT(result.bytesShared, 3 * kMiB);
    EXPECT_EQ(inventory(root()), before);
    EXPECT_LT(inUse(), used);
}

TEST_F(Blocks, zerosAreNotWorthSharing)
{
    writeFile(root() / "a", plainBytes(kMiB, 1) + std::string(4 * kMiB, '\0'));
    writeFile(root() / "b", plainBytes(kMiB, 2) + std::string(4 * kMiB, '\0') + "end");
    const auto before = inventory(root());
    EXPECT_EQ(scan().bytesShared, 0U);
    EXPECT_EQ(inventory(root()), before);
}

TEST_F(Blocks, sparseFileWithCommonDataIsSharedAndKeepsItsHoles)
{
    const std::string common = plainBytes(2 * kMiB, 1);
    writeFile(root() / "a", common + plainBytes(kMiB, 2));
    const int file = ::open((root() / "b").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(::pwrite(file, common.data(), common.size(), 90 * kMiB + 8192),
              static_cast<ssize_t>(common.size()));
    ASSERT_EQ(::fsync(file), 0);
    ::close(file);
    const auto before = inventory(root());
    EXPECT_EQ(scan().bytesShared, 2 * kMiB);
    EXPECT_TRUE(shares("a", "b", 0, 90 * kMiB + 8192));
    EXPECT_EQ(inventory(root()), before);
}

TEST_F(Blocks, onlyNewFilesAreReadInTheNextPass)
{
    const std::string content = plainBytes(4 * kMiB, 1);
    writeFile(root() / "a", content);
    ASSERT_TRUE(scan().complete());
    writeFile(root() / "b", plainBytes(kMiB, 2) + content);
    std::vector<std::string> read;
    ScanSettings watched = settings();
    watched.onStep = [&](ScanStep, const std::string& file) { read.push_back(file); };
    const SharingResult result = shareRepeatedData(watched, {});
    EXPECT_EQ(read, std::vector<std::string>{"b"});
    EXPECT_EQ(result.bytesShared, 4 * kMiB);
    EXPECT_TRUE(shares("a", "b", 0, kMiB));
}

TEST_F(Blocks, sharedCopiesAreReadOnce)
{
    const std::string content = plainBytes(2 * kMiB, 1);
    for (const char* name : {"a", "b", "c"}) {
        writeFile(root() / name, content);
    }
    std::vector<std::string> read;
    ScanSettings watched = settings();
    watched.onStep = [&](ScanStep step, const std::string& file) {
        if (step == ScanStep::ReadBlocks) {
            read.push_back(file);
        }
    };
    ASSERT_TRUE(shareRepeatedData(watched, {}).complete());
    EXPECT_EQ(read.size(), 1U);
    ASSERT_TRUE(shareRepeatedData(watched, {}).complete());
    EXPECT_EQ(read.size(), 1U);
}

TEST_F(Blocks, littleMemoryFindsLessButHarmsNothing)
{
    const std::string content = plainBytes(64 * kMiB, 1);
    writeFile(root() / "a", content);
    writeFile(root() / "b", plainBytes(4096, 2) + content);
    const auto before = inventory(root());
    ScanSettings tight = settings();
    tight.windowMemory = 1;
    const SharingResult result = shareRepeatedData(tight, {});
    EXPECT_TRUE(result.complete());
    EXPECT_GE(result.bytesShared, 60 * kMiB);
    EXPECT_EQ(inventory(root()), before);
}

} // namespace

} // namespace ferrobank::drive
