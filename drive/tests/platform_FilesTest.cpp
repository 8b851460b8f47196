#include "platform/Failure.h"
#include "platform/Files.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

namespace {

/// What was synced, as the paths were then; the library's own function is called all the same.
std::vector<std::filesystem::path> synced;

} // namespace

extern "C" int fsync(int descriptor)
{
    synced.push_back(std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor)));
    return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

namespace ferrobank::drive::testing {
namespace {

TEST(Files, replacedFileHasTheNewTextAndIsPrivate)
{
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "file";
    replaceFile(file, "old");
    replaceFile(file, "new", Durability::Synced);
    EXPECT_EQ(readSmallFile(file), "new");
    struct stat status{};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(Files, syncedReplacementIsSyncedWithItsName)
{
    const TemporaryFolder folder;
    synced.clear();
    replaceFile(folder.path() / "file", "text", Durability::Synced);
    ASSERT_EQ(synced.size(), 2U);
    EXPECT_EQ(synced[0].parent_path(), folder.path()) << "first what is in it, under the passing name";
    EXPECT_EQ(synced[1], folder.path());
    synced.clear();
    replaceFile(folder.path() / "file", "other");
    EXPECT_TRUE(synced.empty());
}

TEST(Files, failedReplacementKeepsTheOldFileAndLeavesNothing)
{
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder.path() / "taken/inside");
    EXPECT_THROW(replaceFile(folder.path() / "taken", "text"), Failure);
    EXPECT_THROW(replaceFile(folder.path() / "missing/file", "text"), Failure);
    EXPECT_TRUE(std::filesystem::is_directory(folder.path() / "taken"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(Files, fileLongerThanTheLimitIsNotRead)
{
    const TemporaryFolder folder;
    replaceFile(folder.path() / "file", std::string(100, 'x'));
    EXPECT_FALSE(readSmallFile(folder.path() / "file", 99));
    EXPECT_TRUE(readSmallFile(folder.path() / "file", 100));
    EXPECT_FALSE(readSmallFile(folder.path() / "missing"));
}

TEST(Files, privateFolderIsMadeWithItsParents)
{
    const TemporaryFolder folder;
    ensurePrivateFolder(folder.path() / "a/b/c");
    struct stat status{};
    ASSERT_EQ(::stat((folder.path() / "a/b/c").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700U);
    EXPECT_NO_THROW(ensurePrivateFolder(folder.path() / "a/b/c"));
}

TEST(Files, linkOrFileInPlaceOfAFolderIsRefused)
{
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder.path() / "real");
    std::filesystem::create_symlink("real", folder.path() / "link");
    replaceFile(folder.path() / "file", "");
    EXPECT_THROW(ensurePrivateFolder(folder.path() / "link"), Failure);
    EXPECT_THROW(ensurePrivateFolder(folder.path() / "file"), Failure);
}

TEST(Files, identityTellsAReplacedFileFromATouchedOne)
{
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "program";
    replaceFile(file, "one");
    const auto first = identityOf(file);
    EXPECT_EQ(identityOf(file), first);
    replaceFile(folder.path() / "fresh", "two");
    std::filesystem::rename(folder.path() / "fresh", file);
    EXPECT_NE(identityOf(file), first);
    EXPECT_FALSE(identityOf(folder.path() / "missing"));
}

} // namespace
} // namespace ferrobank::drive::testing
