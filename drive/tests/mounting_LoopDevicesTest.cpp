#include "mounting/LoopDevices.h"
#include "mounting/Volume.h"
#include "platform/Failure.h"
#include "platform/FileDescriptor.h"
#include "testing/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <fstream>

namespace ferrobank::drive::testing {
namespace {

class LoopDevicesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::filesystem::create_directories(image.parent_path());
        std::ofstream(image) << "x";
        std::filesystem::create_directories(block / "sda");
    }

    void attach(const std::string& name, const std::string& backing, const char* readOnly = "0") const
    {
        std::filesystem::create_directories(block / name / "loop");
        std::ofstream(block / name / "loop/backing_file") << backing << "\n";
        std::ofstream(block / name / "ro") << readOnly << "\n";
    }

    TemporaryFolder folder;
    std::filesystem::path image = folder.path() / "store/drive.btrfs";
    std::filesystem::path block = folder.path() / "block";
};

TEST_F(LoopDevicesTest, findsTheImageAndOnlyIt)
{
    std::filesystem::create_directories(block / "loop0");
    attach("loop1", "/other/file");
    attach("loop10", image.string());
    attach("loop2", image.string(), "1");
    const auto found = loopsOf(image, Recognise::ByName, block);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].device, "/dev/loop2");
    EXPECT_TRUE(found[0].readOnly);
    EXPECT_EQ(found[1].device, "/dev/loop10");
}

TEST_F(LoopDevicesTest, findsADeletedImage)
{
    attach("loop0", image.string() + " (deleted)");
    const auto found = loopsOf(image, Recognise::ByName, block);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_TRUE(found[0].backingDeleted);
}

TEST_F(LoopDevicesTest, findsTheImageThroughALinkedHome)
{
    std::filesystem::create_symlink("store", folder.path() / "link");
    attach("loop0", image.string());
    EXPECT_EQ(loopsOf(folder.path() / "link/drive.btrfs", Recognise::ByName, block).size(), 1U);
}

TEST_F(LoopDevicesTest, findsAHardLinkOnlyWhenItLooksAtTheFiles)
{
    std::filesystem::create_hard_link(image, folder.path() / "other");
    attach("loop0", (folder.path() / "other").string());
    EXPECT_TRUE(loopsOf(image, Recognise::ByName, block).empty());
    EXPECT_EQ(loopsOf(image, Recognise::ByFile, block).size(), 1U);
}

TEST_F(LoopDevicesTest, aNewFileInThePlaceOfADeletedImageIsNotIt)
{
    const std::string gone = (folder.path() / "gone/drive.btrfs").string();
    attach("loop0", gone + " (deleted)");
    EXPECT_TRUE(loopsOf(image, Recognise::ByFile, block).empty());
}

TEST_F(LoopDevicesTest, withoutDescriptorsItSaysThatItCannotTellAndNotThatThereAreNone)
{
#if defined(__has_feature)
#if __has_feature(undefined_behavior_sanitizer)
    GTEST_SKIP() << "the sanitizer needs descriptors of its own to look at an object";
#endif
#endif
    attach("loop0", image.string());
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const auto leave = [&before](rlim_t descriptors) {
        const int lowest = FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)).get();
        const rlimit limit{.rlim_cur = static_cast<rlim_t>(lowest) + descriptors,
                           .rlim_max = before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &limit);
    };
    // None for the folder of devices, then one for it and none for what stands in it.
    for (const rlim_t left : {0U, 1U}) {
        leave(left);
        bool told = false;
        try {
            static_cast<void>(loopsOf(image, Recognise::ByName, block));
            told = true;
        } catch (const Failure& failure) {
            EXPECT_TRUE(failure.text().starts_with("Cannot tell where the drive's store is attached"))
                << failure.text();
        }
        if (left == 0) {
            EXPECT_THROW(static_cast<void>(readMountTable()), Failure);
        }
        ::setrlimit(RLIMIT_NOFILE, &before);
        EXPECT_FALSE(told) << left;
    }
    EXPECT_EQ(loopsOf(image, Recognise::ByName, block).size(), 1U);
}

TEST(FindVolume, takesTheFilesSubvolumeAndNotTheTopLevel)
{
    const std::vector<LoopDevice> loops{{.device = "/dev/loop3"}};
    const MountEntry top{.root = "/", .mountPoint = "/top", .fileSystem = "btrfs", .source = "/dev/loop3"};
    MountEntry files{.root = "/u/files",
                     .mountPoint = "/home/u/Ferrobank",
                     .fileSystem = "btrfs",
                     .source = "/dev/loop3",
                     .readOnly = true};
    EXPECT_FALSE(findVolume(loops, {top}));
    const auto found = findVolume(loops, {top, files});
    ASSERT_TRUE(found);
    EXPECT_EQ(found->mountPoint, "/home/u/Ferrobank");
    EXPECT_TRUE(found->readOnly);
    EXPECT_EQ(otherMounts("/dev/loop3", {top, files}).size(), 1U);
    files.source = "/dev/loop4";
    EXPECT_FALSE(findVolume(loops, {top, files}));
}

} // namespace
} // namespace ferrobank::drive::testing
