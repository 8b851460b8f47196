#include "figures/DeviceCounters.h"
#include "figures/Usage.h"
#include "platform/FileDescriptor.h"
#include "testing/DriveFiles.h"
#include "testing/TemporaryFolder.h"
#include "testing/TestVolume.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

namespace ferrobank::drive {

namespace {

namespace fs = std::filesystem;
using testing::randomBytes;
using testing::runProgram;
using testing::TemporaryFolder;
using testing::TestVolume;
using testing::writeFile;

constexpr std::uint64_t kMiB = 1U << 20U;

class FiguresOnDrive : public ::testing::Test {
protected:
    static void SetUpTestSuite() { testing::enterPrivateMounts(); }

    void SetUp() override
    {
        if (const std::string reason = testing::volumesUnavailable(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        _folder.emplace();
        _volume.emplace(_folder->path(), "drive", "btrfs", 512 * kMiB, "noatime,compress=zstd:1");
    }

    [[nodiscard]] const fs::path& root() const { return _volume->mountPoint(); }

    [[nodiscard]] VolumeState state() const
    {
        const FileDescriptor folder(::open(root().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        return volumeState(folder.get()).value_or(VolumeState{});
    }

    [[nodiscard]] Usage usage() const
    {
        UsageSum sum;
        EXPECT_EQ(walkTree(root(), sum, {}), WalkEnd::Complete);
        return sum.usage();
    }

    std::optional<TemporaryFolder> _folder;
    std::optional<TestVolume> _volume;
};

TEST_F(FiguresOnDrive, generationMovesWithChangesOnly)
{
    ASSERT_EQ(runProgram({"sync", "-f", root().string()}), 0);
    const VolumeState before = state();
    EXPECT_EQ(before.uuid.size(), 36U);
    EXPECT_TRUE(fs::exists(fs::path(kSysfsVolumes) / before.uuid));
    UsageSum sum;
    walkTree(root(), sum, {});
    EXPECT_EQ(state().generation, before.generation);
    writeFile(root() / "new", "x");
    ASSERT_EQ(runProgram({"sync", "-f", root().string()}), 0);
    EXPECT_GT(state().generation, before.generation);
    EXPECT_EQ(volumeGeneration(before.uuid), state().generation);
}

TEST_F(FiguresOnDrive, soundDeviceHasNoErrors)
{
    const FileDescriptor folder(::open(root().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto errors = deviceErrors(folder.get());
    ASSERT_TRUE(errors);
    EXPECT_TRUE(errors->none());
}

TEST_F(FiguresOnDrive, clonedFileIsSaved)
{
    writeFile(root() / "one", randomBytes(64 * kMiB, 1));
    for (const char* copy : {"two", "three"}) {
        ASSERT_EQ(runProgram({"cp", "--reflink=always", (root() / "one").string(), (root() / copy).string()}),
                  0);
    }
    ASSERT_EQ(runProgram({"sync", "-f", root().string()}), 0);
    EXPECT_EQ(usage().bytes, 3 * 64 * kMiB);
    const auto inUse = bytesInUse(state().uuid, 0);
    ASSERT_TRUE(inUse);
    EXPECT_NEAR(static_cast<double>(*inUse), 64.0 * kMiB, 1.0 * kMiB);
    EXPECT_NEAR(static_cast<double>(savedBytes(usage().bytes, *inUse)), 128.0 * kMiB, 1.0 * kMiB);
}

TEST_F(FiguresOnDrive, guardIsNotInUse)
{
    ASSERT_EQ(runProgram({"sync", "-f", root().string()}), 0);
    const auto before = bytesInUse(state().uuid, 0);
    fs::create_directory(root() / ".ferrobank");
    ASSERT_EQ(runProgram({"fallocate", "-l", "200M", (root() / ".ferrobank/guard").string()}), 0);
    ASSERT_EQ(runProgram({"sync", "-f", root().string()}), 0);
    const auto guard = allocatedBytes(root() / ".ferrobank/guard");
    ASSERT_TRUE(before && guard);
    EXPECT_EQ(*guard, 200 * kMiB);
    const auto after = bytesInUse(state().uuid, *guard);
    ASSERT_TRUE(after);
    EXPECT_NEAR(static_cast<double>(*after), static_cast<double>(*before), 512.0 * 1024);
    EXPECT_EQ(usage().files, 0U);
}

TEST_F(FiguresOnDrive, subvolumesAreEnteredAndToldApart)
{
    ASSERT_EQ(runProgram({"btrfs", "-q", "subvolume", "create", (root() / "inner").string()}), 0);
    // The first file of each subvolume has the same inode; linked twice, it must be counted in both.
    for (const fs::path& folder : {root(), root() / "inner"}) {
        writeFile(folder / "file", randomBytes(kMiB, 7));
        fs::create_hard_link(folder / "file", folder / "again");
    }
    EXPECT_EQ(usage().bytes, 2 * kMiB);
    EXPECT_EQ(usage().files, 2U);
}

TEST_F(FiguresOnDrive, otherMountsOnTheDriveAreNotEntered)
{
    fs::create_directory(root() / "other");
    const TestVolume other(root(), "other", "ext4", 16 * kMiB);
    writeFile(other.mountPoint() / "file", randomBytes(kMiB, 8));
    const std::uint64_t image = allocatedBytes(other.image()).value_or(0);
    EXPECT_EQ(usage().bytes, image);
}

} // namespace

} // namespace ferrobank::drive
