#include "helper/Approvals.h"
#include "helper/FstabFile.h"
#include "helper/RootsFolders.h"
#include "helper/StoreOfUser.h"
#include "helper/User.h"
#include "platform/Failure.h"
#include "platform/Files.h"
#include "testing/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <thread>

namespace ferrobank::drive::testing {
namespace {

constexpr uid_t kUser = 64321;
constexpr uid_t kOther = 64322;

void put(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream(path) << text;
}

class MountHelperTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "giving files to another user needs root";
        }
        ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
        std::filesystem::create_directories(store);
        put(store / "drive.btrfs", "x");
        for (const std::filesystem::path& each :
             {home, home / "Library", home / "Library/Application Support", store.parent_path(), store,
              image})
        {
            ASSERT_EQ(::chown(each.c_str(), kUser, kUser), 0);
        }
        ASSERT_EQ(::chmod(image.c_str(), 0600), 0);
        std::filesystem::create_directories(places.mounts);
        put(places.fstab, "a\nb\n");
    }

    /// Nothing of an edit may lie beside fstab afterwards.
    [[nodiscard]] std::ptrdiff_t filesBesideFstab() const
    {
        return std::distance(std::filesystem::directory_iterator(places.fstab.parent_path()), {}) - 1;
    }

    TemporaryFolder folder;
    std::filesystem::path home = folder.path() / "home";
    std::filesystem::path store = home / "Library/Application Support/Ferrobank/store";
    std::filesystem::path image = store / "drive.btrfs";
    User user{.number = kUser, .group = kUser, .name = "nobody-of-that-name", .home = home};
    std::filesystem::path etc = [this] {
        std::filesystem::create_directory(folder.path() / "etc");
        return folder.path() / "etc";
    }();
    Places places{.top = folder.path(),
                  .approvals = folder.path() / "lib/ferrobank/mounting",
                  .mounts = folder.path() / "run/ferrobank",
                  .fstab = etc / "fstab"};
};

using StoreOfUserTest = MountHelperTest;

TEST_F(StoreOfUserTest, ownStoreIsOpened)
{
    EXPECT_TRUE(StoreOfUser::open(user).openImage());
}

TEST_F(StoreOfUserTest, linkOnTheWayIsRefused)
{
    std::filesystem::rename(home / "Library", home / "Moved");
    std::filesystem::create_symlink("Moved", home / "Library");
    EXPECT_THROW(static_cast<void>(StoreOfUser::open(user)), Failure);
}

TEST_F(StoreOfUserTest, linkInPlaceOfTheHomeIsRefused)
{
    std::filesystem::create_symlink(home, folder.path() / "link");
    user.home = folder.path() / "link";
    EXPECT_THROW(static_cast<void>(StoreOfUser::open(user)), Failure);
}

TEST_F(StoreOfUserTest, linkInPlaceOfTheImageIsRefused)
{
    std::filesystem::remove(image);
    std::filesystem::create_symlink("/etc/shadow", image);
    EXPECT_THROW(static_cast<void>(StoreOfUser::open(user)), Failure);
}

TEST_F(StoreOfUserTest, folderOrImageOfAnotherUserIsRefused)
{
    ASSERT_EQ(::chown(store.c_str(), kOther, kOther), 0);
    EXPECT_THROW(static_cast<void>(StoreOfUser::open(user)), Failure);
    ASSERT_EQ(::chown(store.c_str(), kUser, kUser), 0);
    ASSERT_EQ(::chown(image.c_str(), 0, 0), 0);
    EXPECT_THROW(static_cast<void>(StoreOfUser::open(user)), Failure);
}

TEST_F(StoreOfUserTest, whatIsNoPlainFileIsRefusedAndNeverWaitedFor)
{
    std::filesystem::remove(image);
    ASSERT_EQ(::mkfifo(image.c_str(), 0600), 0);
    ASSERT_EQ(::chown(image.c_str(), kUser, kUser), 0);
    EXPECT_THROW(static_cast<void>(StoreOfUser::open(user)), Failure);
    std::filesystem::remove(image);
    EXPECT_THROW(static_cast<void>(StoreOfUser::open(user)), Failure) << "missing";
}

TEST_F(StoreOfUserTest, rightsThatOnlyRootHasAreNotUsed)
{
    // Root reads everything; the user may neither pass this folder nor write this image.
    ASSERT_EQ(::chown(folder.path().c_str(), 0, 0), 0);
    ASSERT_EQ(::chmod(folder.path().c_str(), 0700), 0);
    EXPECT_THROW(static_cast<void>(StoreOfUser::open(user)), Failure);
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(image.c_str(), 0400), 0);
    EXPECT_THROW(static_cast<void>(StoreOfUser::open(user).openImage()), Failure);
    EXPECT_EQ(::access("/etc/shadow", R_OK), 0) << "and root has its rights back";
}

TEST_F(StoreOfUserTest, descriptorStaysTheSameFileWhateverThePathLeadsTo)
{
    const StoreOfUser opened = StoreOfUser::open(user);
    put(folder.path() / "secret", "root's");
    std::filesystem::remove(image);
    std::filesystem::create_symlink(folder.path() / "secret", image);
    const FileDescriptor file = opened.openImage();
    char letter = 0;
    ASSERT_EQ(::read(file.get(), &letter, 1), 1);
    EXPECT_EQ(letter, 'x');
}

using ApprovalsTest = MountHelperTest;

TEST_F(ApprovalsTest, isOfOneUserUntilItIsTakenBack)
{
    const Approvals approvals(places);
    EXPECT_FALSE(approvals.has(user));
    approvals.add(user);
    approvals.add(user);
    EXPECT_TRUE(approvals.has(user));
    EXPECT_FALSE(approvals.has({.number = kOther, .group = kOther, .name = user.name, .home = home}));
    struct stat facts{};
    ASSERT_EQ(::stat((places.approvals / "64321").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0644U) << "users look whether they have one";
    approvals.remove(kUser);
    approvals.remove(kUser);
    EXPECT_FALSE(approvals.has(user));
}

TEST_F(ApprovalsTest, doesNotPassToTheNextOwnerOfTheNumber)
{
    const Approvals approvals(places);
    approvals.add(user);
    User next = user;
    next.name = "somebody-new";
    EXPECT_FALSE(approvals.has(next));
}

TEST_F(ApprovalsTest, whatUsersCouldHaveMadeIsNotBelieved)
{
    const Approvals approvals(places);
    approvals.add(user);
    ASSERT_EQ(::chown((places.approvals / "64321").c_str(), kUser, kUser), 0);
    EXPECT_FALSE(approvals.has(user)) << "a file of the user's";
    std::filesystem::rename(places.approvals / "64321", folder.path() / "there");
    ASSERT_EQ(::chown((folder.path() / "there").c_str(), 0, 0), 0);
    std::filesystem::create_symlink(folder.path() / "there", places.approvals / "64321");
    EXPECT_FALSE(approvals.has(user)) << "a link";
    std::filesystem::remove(places.approvals / "64321");
    ASSERT_EQ(::chmod(places.approvals.c_str(), 0777), 0);
    EXPECT_THROW(static_cast<void>(approvals.has(user)), Failure) << "a folder that all may write";
}

TEST_F(ApprovalsTest, allGoTogether)
{
    const Approvals approvals(places);
    approvals.add(user);
    approvals.removeAll();
    EXPECT_FALSE(std::filesystem::exists(places.approvals));
    approvals.removeAll();
}

using RootsFoldersTest = MountHelperTest;

TEST_F(RootsFoldersTest, everyFolderAboveCounts)
{
    const std::filesystem::path inside = folder.path() / "one/two/program";
    std::filesystem::create_directories(inside.parent_path());
    put(inside, "");
    EXPECT_TRUE(isOnlyRootsToWrite(inside, folder.path()));
    EXPECT_FALSE(isOnlyRootsToWrite(inside)) << "everybody may write to the folder for temporary files";
    ASSERT_EQ(::chmod((folder.path() / "one").c_str(), 0775), 0);
    EXPECT_FALSE(isOnlyRootsToWrite(inside, folder.path()));
    EXPECT_THROW(static_cast<void>(openRootsFolder(inside.parent_path(), folder.path())), Failure);
    ASSERT_EQ(::chmod((folder.path() / "one").c_str(), 0755), 0);
    ASSERT_EQ(::chown((folder.path() / "one/two").c_str(), kUser, 0), 0);
    EXPECT_FALSE(isOnlyRootsToWrite(inside, folder.path()));
    EXPECT_THROW(static_cast<void>(openRootsFolder(inside.parent_path(), folder.path())), Failure);
}

TEST_F(RootsFoldersTest, linksAreNotFollowed)
{
    std::filesystem::create_directories(folder.path() / "real");
    std::filesystem::create_symlink("real", folder.path() / "link");
    EXPECT_THROW(static_cast<void>(openRootsFolder(folder.path() / "link/inside", folder.path())), Failure);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path() / "real"));
}

using FstabFileTest = MountHelperTest;

TEST_F(FstabFileTest, ownerModeAndAttributesAreKept)
{
    ASSERT_EQ(::chown(places.fstab.c_str(), kUser, kOther), 0);
    ASSERT_EQ(::setxattr(places.fstab.c_str(), "trusted.ferrobank", "kept", 4, 0), 0);
    // An access list as setfacl(1) writes it: version 2; user rw, user 64321 r, group r, mask r, others none.
    const unsigned char list[] = {2, 0,  0,   0,   1,   0,   6,  0, 255, 255, 255, 255, 2,   0,  4,
                                  0, 65, 251, 0,   0,   4,   0,  4, 0,   255, 255, 255, 255, 16, 0,
                                  4, 0,  255, 255, 255, 255, 32, 0, 0,   0,   255, 255, 255, 255};
    const bool hasList =
        ::setxattr(places.fstab.c_str(), "system.posix_acl_access", list, sizeof list, 0) == 0;
    ASSERT_TRUE(hasList || errno == ENOTSUP) << errno;
    struct stat before{};
    ASSERT_EQ(::stat(places.fstab.c_str(), &before), 0);

    FstabFile(places).edit([](const std::string&) { return "new\n"; });

    EXPECT_EQ(readSmallFile(places.fstab), "new\n");
    struct stat after{};
    ASSERT_EQ(::stat(places.fstab.c_str(), &after), 0);
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, kUser);
    EXPECT_EQ(after.st_gid, kOther);
    char value[sizeof list]{};
    EXPECT_EQ(::getxattr(places.fstab.c_str(), "trusted.ferrobank", value, sizeof value), 4);
    EXPECT_STREQ(value, "kept");
    if (hasList) {
        ASSERT_EQ(::getxattr(places.fstab.c_str(), "system.posix_acl_access", value, sizeof value),
                  static_cast<ssize_t>(sizeof list));
        EXPECT_EQ(std::memcmp(value, list, sizeof list), 0);
    }
    EXPECT_EQ(filesBesideFstab(), 0);
}

TEST_F(FstabFileTest, whatAnotherProgramWritesMeanwhileIsNeverLost)
{
    int asked = 0;
    FstabFile(places).edit([&](const std::string& text) {
        if (++asked == 1) {
            // Once replaced as a whole and, the next time, written to in place.
            put(etc / "other", text + "theirs\n");
            std::filesystem::rename(etc / "other", places.fstab);
        } else if (asked == 2) {
            std::ofstream(places.fstab, std::ios::app) << "theirs too\n";
        }
        return "ours\n" + text;
    });
    EXPECT_EQ(readSmallFile(places.fstab), "ours\na\nb\ntheirs\ntheirs too\n");
    EXPECT_EQ(asked, 3);
    EXPECT_EQ(filesBesideFstab(), 0);
}

TEST_F(FstabFileTest, fileThatNeverRestsIsLeftAlone)
{
    int asked = 0;
    EXPECT_THROW(FstabFile(places).edit([&](const std::string& text) {
        std::ofstream(places.fstab, std::ios::app) << ++asked << "\n";
        return "ours\n" + text;
    }),
                 Failure);
    EXPECT_EQ(readSmallFile(places.fstab)->find("ours"), std::string::npos);
    EXPECT_EQ(filesBesideFstab(), 0);
}

TEST_F(FstabFileTest, twoEditsAtOnceBothCount)
{
    constexpr int kEach = 20;
    const auto addLines = [&](const std::string& line) {
        for (int at = 0; at < kEach; ++at) {
            FstabFile(places).edit([&](const std::string& text) { return text + line; });
        }
    };
    std::thread one(addLines, "one\n");
    addLines("two\n");
    one.join();
    EXPECT_EQ(readSmallFile(places.fstab)->size(), std::string("a\nb\n").size() + 2 * kEach * 4);
    EXPECT_EQ(filesBesideFstab(), 0);
}

TEST_F(FstabFileTest, leftOverOfAKilledEditIsRemovedAndNeverRead)
{
    put(etc / ".fstab.ferrobank-Ab12Cd", "half of");
    FstabFile(places).edit([](const std::string& text) {
        EXPECT_EQ(text, "a\nb\n");
        return text + "c\n";
    });
    EXPECT_EQ(readSmallFile(places.fstab), "a\nb\nc\n");
    EXPECT_EQ(filesBesideFstab(), 0);
}

TEST_F(FstabFileTest, linkInPlaceOfFstabIsRefused)
{
    std::filesystem::rename(places.fstab, etc / "real");
    std::filesystem::create_symlink("real", places.fstab);
    EXPECT_THROW(FstabFile(places).edit([](const std::string&) { return "c\n"; }), Failure);
    EXPECT_EQ(readSmallFile(etc / "real"), "a\nb\n");
}

TEST_F(FstabFileTest, noFileIsNoReasonToMakeOne)
{
    std::filesystem::remove(places.fstab);
    FstabFile(places).edit([](const std::string& text) {
        EXPECT_EQ(text, "");
        return "c\n";
    });
    EXPECT_FALSE(std::filesystem::exists(places.fstab));
}

TEST(User, callerIsWhoPkexecSaysAndNobodyElse)
{
    ::unsetenv("PKEXEC_UID");
    EXPECT_THROW(static_cast<void>(User::calling()), Failure);
    for (const char* text : {"", "0", "-1", "1x", "1 1", " 1", "99999999999999999999"}) {
        ::setenv("PKEXEC_UID", text, 1);
        EXPECT_THROW(static_cast<void>(User::calling()), Failure) << text;
    }
    ::setenv("PKEXEC_UID", "1", 1);
    EXPECT_EQ(User::calling().number, 1U);
    ::unsetenv("PKEXEC_UID");
}

} // namespace
} // namespace ferrobank::drive::testing
