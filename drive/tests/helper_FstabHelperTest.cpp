#include "helper/FstabHelper.h"
#include "helper/StoreOfUser.h"
#include "platform/Failure.h"
#include "platform/Files.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace ferrobank::drive::testing {
namespace {

constexpr uid_t kUser = 64321;

class StoreOfUserTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "giving files to another user needs root";
        }
        std::filesystem::create_directories(store);
        std::ofstream(store / "drive.btrfs") << "x";
        for (const std::filesystem::path& each :
             {home, home / "Library", home / "Library/Application Support", store.parent_path(), store,
              store / "drive.btrfs"})
        {
            ASSERT_EQ(::chown(each.c_str(), kUser, kUser), 0);
        }
    }

    TemporaryFolder folder;
    std::filesystem::path home = folder.path() / "home";
    std::filesystem::path store = home / "Library/Application Support/Ferrobank/store";
};

TEST_F(StoreOfUserTest, ownStoreIsOpened)
{
    EXPECT_NO_THROW(static_cast<void>(StoreOfUser::open(kUser, kUser, home)));
}

TEST_F(StoreOfUserTest, linkOnTheWayIsRefused)
{
    std::filesystem::rename(home / "Library", home / "Moved");
    std::filesystem::create_symlink("Moved", home / "Library");
    EXPECT_THROW(static_cast<void>(StoreOfUser::open(kUser, kUser, home)), Failure);
}

TEST_F(StoreOfUserTest, linkInPlaceOfTheImageIsRefused)
{
    std::filesystem::remove(store / "drive.btrfs");
    std::filesystem::create_symlink("/etc/shadow", store / "drive.btrfs");
    EXPECT_THROW(static_cast<void>(StoreOfUser::open(kUser, kUser, home)), Failure);
}

TEST_F(StoreOfUserTest, folderOrImageOfAnotherUserIsRefused)
{
    ASSERT_EQ(::chown(store.c_str(), 0, 0), 0);
    EXPECT_THROW(static_cast<void>(StoreOfUser::open(kUser, kUser, home)), Failure);
    ASSERT_EQ(::chown(store.c_str(), kUser, kUser), 0);
    ASSERT_EQ(::chown((store / "drive.btrfs").c_str(), 0, 0), 0);
    EXPECT_THROW(static_cast<void>(StoreOfUser::open(kUser, kUser, home)), Failure);
}

TEST_F(StoreOfUserTest, missingImageIsRefused)
{
    std::filesystem::remove(store / "drive.btrfs");
    EXPECT_THROW(static_cast<void>(StoreOfUser::open(kUser, kUser, home)), Failure);
}

TEST(FstabHelper, removesItsLineAndKeepsTheFilesMode)
{
    const TemporaryFolder folder;
    const std::filesystem::path fstab = folder.path() / "fstab";
    std::ofstream(fstab)
        << "a\n# Ferrobank drive of user 64321: begin\nx\n# Ferrobank drive of user 64321: end\nb\n";
    ASSERT_EQ(::chmod(fstab.c_str(), 0640), 0);
    FstabHelper(kUser, fstab).remove();
    EXPECT_EQ(readSmallFile(fstab), "a\nb\n");
    struct stat status{};
    ::stat(fstab.c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
}

TEST(FstabHelper, linkInPlaceOfFstabIsRefused)
{
    const TemporaryFolder folder;
    std::ofstream(folder.path() / "real") << "a\n";
    std::filesystem::create_symlink("real", folder.path() / "fstab");
    EXPECT_THROW(FstabHelper(kUser, folder.path() / "fstab").remove(), Failure);
}

TEST(FstabHelper, callerIsWhoPkexecSaysAndNobodyElse)
{
    ::unsetenv("PKEXEC_UID");
    EXPECT_THROW(static_cast<void>(FstabHelper::callingUser()), Failure);
    for (const char* text : {"", "0", "-1", "1000x", "1000 1"}) {
        ::setenv("PKEXEC_UID", text, 1);
        EXPECT_THROW(static_cast<void>(FstabHelper::callingUser()), Failure) << text;
    }
    ::unsetenv("PKEXEC_UID");
}

} // namespace
} // namespace ferrobank::drive::testing
