#include "figures/DeviceCounters.h"
#include "testing/DriveFiles.h"
#include "testing/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace ferrobank::drive {

namespace {

using testing::TemporaryFolder;
using testing::writeFile;

constexpr const char* kUuid = "01234567-89ab-cdef-0123-456789abcdef";

void publish(const TemporaryFolder& volumes, const std::string& data, const std::string& metadata,
             const std::string& system)
{
    const auto allocation = volumes.path() / kUuid / "allocation";
    writeFile(allocation / "data" / "disk_used", data);
    writeFile(allocation / "metadata" / "disk_used", metadata);
    writeFile(allocation / "system" / "disk_used", system);
}

TEST(BytesInUse, isTheSumWithoutTheGuard)
{
    const TemporaryFolder volumes;
    publish(volumes, "5000\n", "700\n", "30\n");
    EXPECT_EQ(bytesInUse(kUuid, 0, volumes.path()), 5730U);
    EXPECT_EQ(bytesInUse(kUuid, 4000, volumes.path()), 1730U);
}

TEST(BytesInUse, isNeverBelowZero)
{
    const TemporaryFolder volumes;
    publish(volumes, "1\n", "1\n", "1\n");
    EXPECT_EQ(bytesInUse(kUuid, 1'000'000, volumes.path()), 0U);
}

TEST(BytesInUse, isUnknownWhileNotMounted)
{
    const TemporaryFolder volumes;
    EXPECT_EQ(bytesInUse(kUuid, 0, volumes.path()), std::nullopt);
}

TEST(BytesInUse, isUnknownWhenACounterIsNoNumber)
{
    const TemporaryFolder volumes;
    publish(volumes, "5000\n", "?\n", "30\n");
    EXPECT_EQ(bytesInUse(kUuid, 0, volumes.path()), std::nullopt);
}

TEST(SavedBytes, isTheDifferenceAndNeverNegative)
{
    EXPECT_EQ(savedBytes(100, 30), 70U);
    EXPECT_EQ(savedBytes(30, 100), 0U);
    EXPECT_EQ(savedBytes(0, 0), 0U);
}

TEST(AllocatedBytes, countsBlocksAndNotTheLength)
{
    const TemporaryFolder folder;
    const auto image = folder.path() / "image";
    writeFile(image, std::string(8192, 'x'));
    std::filesystem::resize_file(image, 1U << 30U);
    const auto bytes = allocatedBytes(image);
    ASSERT_TRUE(bytes);
    EXPECT_GE(*bytes, 8192U);
    EXPECT_LT(*bytes, 1U << 20U);
}

TEST(AllocatedBytes, isUnknownForAMissingFile)
{
    const TemporaryFolder folder;
    EXPECT_EQ(allocatedBytes(folder.path() / "none"), std::nullopt);
}

TEST(VolumeGeneration, comesFromTheKernelsFile)
{
    const TemporaryFolder volumes;
    writeFile(volumes.path() / kUuid / "generation", "4711\n");
    EXPECT_EQ(volumeGeneration(kUuid, volumes.path()), 4711U);
    EXPECT_EQ(volumeGeneration("other", volumes.path()), std::nullopt);
}

TEST(VolumeState, isUnknownOnAnotherFileSystem)
{
    const int folder = ::open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    EXPECT_EQ(volumeState(folder).has_value(), false);
    EXPECT_EQ(deviceErrors(folder).has_value(), false);
    ::close(folder);
}

TEST(DeviceErrors, anyCounterIsASign)
{
    EXPECT_TRUE(DeviceErrors{}.none());
    EXPECT_FALSE((DeviceErrors{1, 0, 0, 0, 0}.none()));
    EXPECT_FALSE((DeviceErrors{0, 1, 0, 0, 0}.none()));
    EXPECT_FALSE((DeviceErrors{0, 0, 1, 0, 0}.none()));
    EXPECT_FALSE((DeviceErrors{0, 0, 0, 1, 0}.none()));
    EXPECT_FALSE((DeviceErrors{0, 0, 0, 0, 1}.none()));
}

} // namespace

} // namespace ferrobank::drive
