#include "figures/DeviceCounters.h"
#include "platform/Files.h"
#include "space/GuardFile.h"
#include "testing/ScanVolume.h"

#include <fcntl.h>
#include <sys/statvfs.h>

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
        const FileDescriptor folder(::open(large->mountPoint().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        uuid = volumeState(folder.get())->uuid;
        empty = dataInUse();
    }

    [[nodiscard]] std::uint64_t dataInUse() const
    {
        EXPECT_EQ(runProgram({"sync", "-f", large->mountPoint().string()}), 0);
        return std::stoull(
            readSmallFile(std::filesystem::path("/sys/fs/btrfs") / uuid / "allocation/data/disk_used")
                .value());
    }

    [[nodiscard]] std::uint64_t freeBytes() const
    {
        struct statvfs facts{};
        ::statvfs(large->mountPoint().c_str(), &facts);
        return static_cast<std::uint64_t>(facts.f_bavail) * facts.f_frsize;
    }

    std::optional<TestVolume> large;
    std::string uuid;
    std::uint64_t empty = 0;
};

TEST_F(GuardFileTest, takesExactlyItsAllocatedBytesHoweverOftenItIsResized)
{
    const GuardFile guard(large->mountPoint(), uuid);
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
    const GuardFile guard(large->mountPoint(), uuid);
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
    const GuardFile guard(large->mountPoint(), uuid);
    guard.resize(1000 * kMiB, source.get_token());
    EXPECT_EQ(guard.size(), 0U);
}

TEST_F(GuardFileTest, isNeverMadeOnAnotherVolume)
{
    const GuardFile guard(large->mountPoint(), "00000000-0000-0000-0000-000000000000");
    guard.resize(100 * kMiB, {});
    EXPECT_FALSE(std::filesystem::exists(large->mountPoint() / ".ferrobank"));
    EXPECT_EQ(guard.size(), 0U);
}

} // namespace
} // namespace ferrobank::drive::testing
