#include "figures/DeviceCounters.h"
#include "platform/Files.h"
#include "space/GuardFile.h"
#include "testing/ScanVolume.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <vector>

namespace ferrobank::drive::testing {
namespace {

/// A guard on a small drive of its own.
class GuardFileTest : public ScanVolume {
protected:
    void SetUp() override
    {
        ScanVolume::SetUp();
        if (IsSkipped()) {
            return;
        }
        large.emplace(root().parent_path(), "large", "btrfs", 8192 * kMiB, "noatime,discard=sync");
        uuid = volumeState(openRoot().get())->uuid;
        empty = dataInUse();
    }

    [[nodiscard]] const std::filesystem::path& drive() const { return large->mountPoint(); }

    [[nodiscard]] FileDescriptor openRoot() const
    {
        return FileDescriptor(::open(drive().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }

    [[nodiscard]] std::uint64_t dataInUse() const
    {
        EXPECT_EQ(runProgram({"sync", "-f", drive().string()}), 0);
        return std::stoull(
            readSmallFile(std::filesystem::path("/sys/fs/btrfs") / uuid / "allocation/data/disk_used")
                .value());
    }

    [[nodiscard]] std::uint64_t freeBytes() const
    {
        struct statvfs facts{};
        ::statvfs(drive().c_str(), &facts);
        return static_cast<std::uint64_t>(facts.f_bavail) * facts.f_frsize;
    }

    /// The paths of everything that a tool can meet on the drive.
    [[nodiscard]] std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(drive())) {
            found.push_back(entry.path().lexically_relative(drive()).string());
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    [[nodiscard]] std::uint64_t generation() const
    {
        EXPECT_EQ(runProgram({"sync", "-f", drive().string()}), 0);
        return filesGeneration(openRoot().get(), uuid).value();
    }

    std::optional<TestVolume> large;
    std::string uuid;
    std::uint64_t empty = 0;
};

TEST_F(GuardFileTest, takesExactlyItsAllocatedBytesHoweverOftenItIsResized)
{
    GuardFile guard(drive(), uuid);
    EXPECT_EQ(guard.size(), 0U);
    for (const std::uint64_t mebibytes :
         std::initializer_list<std::uint64_t>{3000, 2999, 2817, 2816, 100, 1500, 1501, 700, 4, 5000, 1, 0})
    {
        guard.resize(mebibytes * kMiB - (mebibytes > 0 ? 1000 : 0), {});
        EXPECT_EQ(guard.size(), (mebibytes + 3) / 4 * 4 * kMiB);
        EXPECT_EQ(dataInUse() - empty, guard.size()) << mebibytes;
    }
}

TEST_F(GuardFileTest, growsAsFarAsTheDriveHasRoom)
{
    GuardFile guard(drive(), uuid);
    guard.resize(std::uint64_t{1} << 40U, {});
    EXPECT_GT(guard.size(), 6000 * kMiB);
    EXPECT_LT(freeBytes(), 300 * kMiB);
    guard.resize(0, {});
    EXPECT_EQ(dataInUse(), empty);
    EXPECT_GT(freeBytes(), 6000 * kMiB);
}

TEST_F(GuardFileTest, stopsBetweenTwoPiecesWhenAsked)
{
    std::stop_source source;
    source.request_stop();
    GuardFile guard(drive(), uuid);
    guard.resize(1000 * kMiB, source.get_token());
    EXPECT_EQ(guard.size(), 0U);
}

TEST_F(GuardFileTest, isNeverMadeOnAnotherVolume)
{
    GuardFile guard(drive(), "00000000-0000-0000-0000-000000000000");
    guard.resize(100 * kMiB, {});
    EXPECT_TRUE(names().empty());
    EXPECT_EQ(guard.size(), 0U);
}

TEST_F(GuardFileTest, hasNoNameThatAToolCouldMeet)
{
    GuardFile guard(drive(), uuid);
    guard.resize(2000 * kMiB, {});
    EXPECT_EQ(guard.size(), 2000 * kMiB);
    EXPECT_EQ(names(), (std::vector<std::string>{".ferrobank", ".ferrobank/space"}));
}

TEST_F(GuardFileTest, goesWithWhoeverHasItOpenLast)
{
    {
        GuardFile guard(drive(), uuid);
        guard.resize(2000 * kMiB, {});
        EXPECT_EQ(dataInUse() - empty, 2000 * kMiB);
    }
    EXPECT_EQ(dataInUse(), empty);
}

TEST_F(GuardFileTest, linkInPlaceOfTheToolFolderIsNotFollowed)
{
    const std::filesystem::path elsewhere = root() / "elsewhere";
    std::filesystem::create_directory(elsewhere);
    std::filesystem::create_symlink(elsewhere, drive() / ".ferrobank");
    GuardFile guard(drive(), uuid);
    guard.resize(1000 * kMiB, {});
    EXPECT_TRUE(std::filesystem::is_empty(elsewhere));
    EXPECT_EQ(guard.size(), 1000 * kMiB);
    EXPECT_EQ(dataInUse() - empty, 1000 * kMiB);
}

TEST_F(GuardFileTest, anotherVolumeMountedOverTheToolFolderIsLeftAlone)
{
    std::filesystem::create_directory(drive() / ".ferrobank");
    const TestVolume other(drive(), ".ferrobank", "btrfs", 512 * kMiB);
    GuardFile guard(drive(), uuid);
    guard.resize(1000 * kMiB, {});
    EXPECT_EQ(guard.size(), 1000 * kMiB);
    EXPECT_TRUE(std::filesystem::is_empty(other.mountPoint()));
}

TEST_F(GuardFileTest, guardOfTheFirstFormIsKeptWithoutItsName)
{
    std::filesystem::create_directory(drive() / ".ferrobank");
    const std::string named = (drive() / ".ferrobank/guard").string();
    ASSERT_EQ(runProgram({"fallocate", "-l", "1000M", named}), 0);
    GuardFile guard(drive(), uuid);
    guard.resize(1000 * kMiB, {});
    EXPECT_FALSE(std::filesystem::exists(named));
    EXPECT_EQ(dataInUse() - empty, 1000 * kMiB);
    guard.resize(0, {});
    EXPECT_EQ(dataInUse(), empty);
}

TEST_F(GuardFileTest, fileOfAnotherKindUnderTheOldNameStays)
{
    std::filesystem::create_directory(drive() / ".ferrobank");
    writeFile(drive() / "document", "words");
    std::filesystem::create_hard_link(drive() / "document", drive() / ".ferrobank/guard");
    GuardFile guard(drive(), uuid);
    guard.resize(100 * kMiB, {});
    EXPECT_EQ(readSmallFile(drive() / ".ferrobank/guard"), "words");
    EXPECT_EQ(readSmallFile(drive() / "document"), "words");
}

TEST_F(GuardFileTest, oneThatIsHandedOverIsKeptAndAnyOtherFileIsNot)
{
    GuardFile first(drive(), uuid);
    first.resize(1000 * kMiB, {});
    GuardFile second(drive(), uuid, first.take());
    EXPECT_EQ(second.size(), 1000 * kMiB);
    EXPECT_EQ(first.size(), 0U);

    writeFile(drive() / "document", "words");
    FileDescriptor document(::open((drive() / "document").c_str(), O_RDWR | O_CLOEXEC));
    FileDescriptor foreign(::open(root().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
    FileDescriptor readable(
        ::open(("/proc/self/fd/" + std::to_string(second.descriptor())).c_str(), O_RDONLY));
    ASSERT_TRUE(document && foreign && readable);
    for (FileDescriptor* wrong : {&document, &foreign, &readable}) {
        EXPECT_EQ(GuardFile(drive(), uuid, std::move(*wrong)).descriptor(), -1);
    }
    EXPECT_EQ(readSmallFile(drive() / "document"), "words");
}

TEST_F(GuardFileTest, itsChangesAreNoChangesOfTheFiles)
{
    GuardFile guard(drive(), uuid);
    guard.resize(4 * kMiB, {});
    const std::uint64_t before = generation();
    const std::uint64_t whole = volumeGeneration(uuid).value();
    for (const std::uint64_t mebibytes : {1000U, 3000U, 500U}) {
        guard.resize(mebibytes * kMiB, {});
        guard.settle();
        EXPECT_EQ(generation(), before);
    }
    EXPECT_GT(volumeGeneration(uuid).value(), whole);
    writeFile(drive() / "document", "words");
    guard.resize(1000 * kMiB, {});
    EXPECT_NE(generation(), before);
}

TEST_F(GuardFileTest, changesInSubvolumesThatSomebodyMadeCountToo)
{
    GuardFile guard(drive(), uuid);
    guard.resize(4 * kMiB, {});
    ASSERT_EQ(runProgram({"btrfs", "-q", "subvolume", "create", (drive() / "own").string()}), 0);
    const std::uint64_t before = generation();
    writeFile(drive() / "own/document", "words");
    EXPECT_NE(generation(), before);
}

} // namespace
} // namespace ferrobank::drive::testing
