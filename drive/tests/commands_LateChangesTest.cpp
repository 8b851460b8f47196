#include "commands/LateChanges.h"
#include "testing/DriveFiles.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>

namespace ferrobank::drive::testing {
namespace {

class LateChanges : public ::testing::Test {
protected:
    void SetUp() override
    {
        writeFile(drive / "a", "text");
        writeFile(drive / "folder/b", "text");
        std::filesystem::create_symlink("a", drive / "link");
        std::filesystem::copy(drive, copy,
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::copy_symlinks);
    }

    [[nodiscard]] std::optional<std::string> find() const { return findLateChange(drive, copy, {}); }

    TemporaryFolder folder;
    std::filesystem::path drive = folder.path() / "drive";
    std::filesystem::path copy = folder.path() / "copy";
};

TEST_F(LateChanges, upToDateCopyHasNone)
{
    EXPECT_EQ(find(), std::nullopt);
}

TEST_F(LateChanges, newFileNewFolderAndNewLinkAreNamed)
{
    writeFile(drive / "folder/new", "x");
    EXPECT_EQ(find(), "new");
    std::filesystem::remove(drive / "folder/new");
    std::filesystem::create_directories(drive / "empty");
    EXPECT_EQ(find(), "empty");
    std::filesystem::remove(drive / "empty");
    std::filesystem::create_symlink("x", drive / "second");
    EXPECT_EQ(find(), "second");
}

TEST_F(LateChanges, otherSizeOrLaterTimeIsNamed)
{
    writeFile(drive / "a", "longer text");
    EXPECT_EQ(find(), "a");
    writeFile(drive / "a", "text");
    std::filesystem::last_write_time(drive / "a",
                                     std::filesystem::last_write_time(copy / "a") + std::chrono::seconds(10));
    EXPECT_EQ(find(), "a");
}

TEST_F(LateChanges, deletedFileIsNoLoss)
{
    std::filesystem::remove(drive / "a");
    EXPECT_EQ(find(), std::nullopt);
}

} // namespace
} // namespace ferrobank::drive::testing
