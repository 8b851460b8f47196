#include "sharing/FileTable.h"
#include "testing/ScanVolume.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <vector>

namespace ferrobank::drive {

namespace {

namespace fs = std::filesystem;
using testing::contents;
using testing::inventory;
using testing::kMiB;
using testing::randomBytes;
using testing::runProgram;
using testing::writeFile;

using WholeFiles = testing::ScanVolume;

TEST_F(WholeFiles, equalFilesShareTheirBlocksAndNothingElseChanges)
{
    const std::string content = randomBytes(20 * kMiB + 123, 1);
    for (const char* name : {"one", "sub/two", "sub/deep/three"}) {
        writeFile(root() / name, content);
    }
    writeFile(root() / "other", randomBytes(content.size(), 2));
    const auto before = inventory(root());
    const std::uint64_t used = inUse();
    const SharingResult result = scan();
    EXPECT_TRUE(result.complete()) << result.error;
    EXPECT_EQ(result.filesShared, 2U);
    EXPECT_EQ(result.bytesShared, 2 * content.size());
    EXPECT_TRUE(shares("one", "sub/two"));
    EXPECT_TRUE(shares("one", "sub/deep/three", 20 * kMiB));
    EXPECT_FALSE(shares("one", "other"));
    EXPECT_EQ(inventory(root()), before);
    EXPECT_NEAR(static_cast<double>(used - inUse()), 40.0 * kMiB, 1.0 * kMiB);
}

TEST_F(WholeFiles, figuresComeFromTheSameWalk)
{
    writeFile(root() / "one", randomBytes(kMiB, 1));
    writeFile(root() / "tiny", "x");
    writeFile(root() / ".ferrobank/guard", randomBytes(kMiB, 2));
    const SharingResult result = scan();
    EXPECT_EQ(result.usage.bytes, kMiB + 4096);
    EXPECT_EQ(result.usage.files, 2U);
    EXPECT_EQ(result.filesLookedAt, 1U);
}

TEST_F(WholeFiles, sameSizeWithDifferentContentIsNotShared)
{
    for (std::uint64_t number = 0; number < 20; ++number) {
        writeFile(root() / std::to_string(number), randomBytes(100'000, number));
    }
    const auto before = inventory(root());
    const SharingResult result = scan();
    EXPECT_TRUE(result.complete());
    EXPECT_EQ(result.bytesShared, 0U);
    EXPECT_EQ(result.filesHashed, 20U);
    EXPECT_EQ(inventory(root()), before);
}

TEST_F(WholeFiles, sizesThatOccurOnceAreNotRead)
{
    for (std::size_t number = 0; number < 20; ++number) {
        writeFile(root() / std::to_string(number), randomBytes(100'000 + number, 1));
    }
    EXPECT_EQ(scan().filesHashed, 0U);
}

TEST_F(WholeFiles, filesBelowFourKilobytesThatTakeABlockAreShared)
{
    for (const char* name : {"a", "b", "c"}) {
        writeFile(root() / name, randomBytes(3001, 1));
    }
    const auto before = inventory(root());
    const std::uint64_t taken = inUse();
    const SharingResult result = scan();
    EXPECT_EQ(result.filesShared, 2U);
    EXPECT_EQ(result.filesRefused, 0U);
    EXPECT_TRUE(shares("a", "b"));
    EXPECT_TRUE(shares("a", "c"));
    EXPECT_EQ(inventory(root()), before);
    EXPECT_LE(inUse() + 8192, taken);
    EXPECT_EQ(scan().bytesShared, 0U);
}

TEST_F(WholeFiles, filesThatLieAmongTheNamesAreLeftAlone)
{
    for (const char* name : {"a", "b"}) {
        writeFile(root() / name, randomBytes(1500, 1));
        writeFile(root() / (std::string(name) + "-empty"), "");
    }
    EXPECT_EQ(scan().filesLookedAt, 0U);
    for (const char* name : {"c", "d"}) {
        writeFile(root() / name, std::string(3900, name[0]));
        writeFile(root() / (std::string("same-") + name), std::string(3900, 'x'));
    }
    for (int pass = 0; pass < 2; ++pass) {
        const SharingResult result = scan();
        EXPECT_EQ(result.filesHashed, 0U) << "compressed they are small enough";
        EXPECT_EQ(result.bytesShared, 0U);
    }
}

TEST_F(WholeFiles, filesChangedAMomentAgoAreLeftAlone)
{
    writeFile(root() / "a", randomBytes(kMiB, 1));
    writeFile(root() / "b", randomBytes(kMiB, 1));
    ScanSettings patient = settings();
    patient.quietSeconds = 60;
    const SharingResult result = shareRepeatedData(patient, {});
    EXPECT_EQ(result.filesLookedAt, 0U);
    EXPECT_EQ(result.usage.files, 2U);
}

TEST_F(WholeFiles, ownerMaySharesFilesThatNobodyMayWrite)
{
    for (const char* name : {"a", "b"}) {
        writeFile(root() / name, randomBytes(kMiB, 1));
        fs::permissions(root() / name, fs::perms(0444));
        ASSERT_EQ(::chown((root() / name).c_str(), testing::kOrdinaryUser, testing::kOrdinaryUser), 0);
    }
    const auto before = inventory(root());
    fs::create_directory(index());
    ASSERT_EQ(::chown(index().c_str(), testing::kOrdinaryUser, testing::kOrdinaryUser), 0);
    EXPECT_TRUE(testing::asOrdinaryUser([&] {
        const SharingResult result = scan();
        return result.complete() && result.bytesShared == kMiB && result.filesRefused == 0;
    }));
    EXPECT_TRUE(shares("a", "b"));
    EXPECT_EQ(inventory(root()), before);
}

TEST_F(WholeFiles, hardLinksCountAsOneFile)
{
    writeFile(root() / "a", randomBytes(kMiB, 1));
    fs::create_hard_link(root() / "a", root() / "again");
    const SharingResult result = scan();
    EXPECT_EQ(result.filesLookedAt, 1U);
    EXPECT_EQ(result.filesHashed, 0U);
}

TEST_F(WholeFiles, holesStayHoles)
{
    const std::string data = randomBytes(kMiB, 1);
    for (const char* name : {"a", "b"}) {
        const int file = ::open((root() / name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        ASSERT_EQ(::pwrite(file, data.data(), data.size(), 50 * kMiB), static_cast<ssize_t>(data.size()));
        ASSERT_EQ(::ftruncate(file, 80 * kMiB), 0);
        ASSERT_EQ(::fsync(file), 0);
        ::close(file);
    }
    const auto before = inventory(root());
    const SharingResult result = scan();
    EXPECT_TRUE(result.complete()) << result.error;
    EXPECT_EQ(result.bytesShared, kMiB);
    EXPECT_TRUE(shares("a", "b", 50 * kMiB));
    EXPECT_EQ(inventory(root()), before);
    struct stat status{};
    ASSERT_EQ(::stat((root() / "b").c_str(), &status), 0);
    EXPECT_EQ(status.st_blocks * 512, static_cast<blkcnt_t>(kMiB));
}

TEST_F(WholeFiles, hugeSparseFilesTakeNoTime)
{
    for (const char* name : {"a", "b"}) {
        writeFile(root() / name, randomBytes(8192, 1));
        fs::resize_file(root() / name, std::uintmax_t{4} << 40U);
    }
    const SharingResult result = scan();
    EXPECT_TRUE(result.complete());
    EXPECT_TRUE(shares("a", "b"));
    EXPECT_LT(result.duration, Seconds{10});
}

TEST_F(WholeFiles, unchangedPassReadsNothing)
{
    const std::string content = randomBytes(kMiB, 1);
    for (int number = 0; number < 10; ++number) {
        writeFile(root() / std::to_string(number), content);
    }
    EXPECT_EQ(scan().filesHashed, 10U);
    std::vector<ScanStep> steps;
    ScanSettings watched = settings();
    watched.onStep = [&](ScanStep step, const std::string&) { steps.push_back(step); };
    const SharingResult again = shareRepeatedData(watched, {});
    EXPECT_TRUE(again.complete());
    EXPECT_EQ(again.filesHashed, 0U);
    EXPECT_EQ(again.bytesShared, 0U);
    EXPECT_TRUE(steps.empty());
}

TEST_F(WholeFiles, newCopyJoinsTheOthersAndOnlyItIsRead)
{
    const std::string content = randomBytes(kMiB, 1);
    writeFile(root() / "a", content);
    writeFile(root() / "b", content);
    ASSERT_TRUE(scan().complete());
    writeFile(root() / "c", content);
    const SharingResult result = scan();
    EXPECT_EQ(result.filesHashed, 1U);
    EXPECT_EQ(result.bytesShared, kMiB);
    EXPECT_TRUE(shares("a", "c"));
    EXPECT_TRUE(shares("b", "c"));
}

TEST_F(WholeFiles, changedFileIsReadAgain)
{
    writeFile(root() / "a", randomBytes(kMiB, 1));
    writeFile(root() / "b", randomBytes(kMiB, 1));
    ASSERT_TRUE(scan().complete());
    writeFile(root() / "b", randomBytes(kMiB, 2));
    EXPECT_EQ(scan().filesHashed, 1U);
    EXPECT_FALSE(shares("a", "b"));
    EXPECT_EQ(testing::readFile(root() / "b"), randomBytes(kMiB, 2));
}

TEST_F(WholeFiles, clonedFilesNeedNoSharing)
{
    writeFile(root() / "a", randomBytes(4 * kMiB, 1));
    ASSERT_EQ(runProgram({"cp", "--reflink=always", (root() / "a").string(), (root() / "b").string()}), 0);
    ASSERT_GT(inUse(), 0U);
    const SharingResult result = scan();
    EXPECT_EQ(result.filesHashed, 2U);
    EXPECT_EQ(result.bytesShared, 0U);
}

TEST_F(WholeFiles, manyFilesAreTakenInRounds)
{
    for (int number = 0; number < 60; ++number) {
        const auto size = static_cast<std::size_t>(8192 + number / 3 * 4096);
        writeFile(root() / std::to_string(number), randomBytes(size, static_cast<std::uint64_t>(number / 3)));
    }
    writeFile(root() / "large1", randomBytes(3 * kMiB, 99));
    writeFile(root() / "large2", randomBytes(kMiB, 98) + randomBytes(3 * kMiB, 99));
    const auto before = inventory(root());
    ScanSettings small = settings();
    small.mostFiles = 20;
    const SharingResult result = shareRepeatedData(small, {});
    EXPECT_TRUE(result.complete()) << result.error;
    EXPECT_EQ(result.filesLookedAt, 62U);
    EXPECT_EQ(result.filesShared, 40U);
    for (int number = 0; number < 60; number += 3) {
        EXPECT_TRUE(shares(std::to_string(number), std::to_string(number + 2))) << number;
    }
    EXPECT_TRUE(shares("large1", "large2", 0, kMiB));
    EXPECT_EQ(inventory(root()), before);
    const SharingResult again = shareRepeatedData(small, {});
    EXPECT_EQ(again.filesHashed, 0U);
    EXPECT_EQ(again.bytesShared, 0U);
}

TEST_F(WholeFiles, readOnlySnapshotsAreLeftAlone)
{
    ASSERT_EQ(runProgram({"btrfs", "-q", "subvolume", "create", (root() / "work").string()}), 0);
    writeFile(root() / "work/a", randomBytes(kMiB, 1));
    ASSERT_EQ(runProgram({"btrfs", "-q", "subvolume", "snapshot", "-r", (root() / "work").string(),
                          (root() / "frozen").string()}),
              0);
    const SharingResult result = scan();
    EXPECT_EQ(result.filesLookedAt, 1U);
    EXPECT_EQ(result.filesRefused, 0U);
    EXPECT_EQ(result.usage.files, 2U);
}

TEST_F(WholeFiles, strangeNamesAreOpenedAndNamedReadably)
{
    const std::string content = randomBytes(kMiB, 1);
    writeFile(root() / "line\nbreak", content);
    writeFile(root() / "caf\xe9/\xff", content);
    EXPECT_EQ(scan().bytesShared, kMiB);
}

TEST_F(WholeFiles, clockThatWasSetBackDoesNotStopSharing)
{
    // The change time of these files lies an hour in the future of the pass.
    const std::string content = randomBytes(kMiB, 1);
    writeFile(root() / "a", content);
    writeFile(root() / "b", content);
    FileTable::Limits limits;
    limits.now = std::time(nullptr) - 3600;
    FileTable table(limits, {});
    walkTree(root(), table, {});
    EXPECT_EQ(table.files().size(), 2U);
}

} // namespace

} // namespace ferrobank::drive
