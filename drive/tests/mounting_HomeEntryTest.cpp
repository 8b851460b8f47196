#include "mounting/HomeEntry.h"
#include "mounting/MountHelper.h"
#include "platform/Failure.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

namespace ferrobank::drive::testing {
namespace {

class HomeEntryTest : public ::testing::Test {
protected:
    TemporaryFolder folder;
    std::filesystem::path path = folder.path() / "Ferrobank";
    HomeEntry entry{path, "u"};
};

TEST_F(HomeEntryTest, becomesAMountPointThatNobodyCanWriteTo)
{
    entry.becomeMountPoint();
    struct stat status{};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0555U);
    entry.removeIfOwn();
    EXPECT_EQ(entry.kind(), HomeEntry::Kind::Absent);
}

TEST_F(HomeEntryTest, linkFollowsTheMountWhenItsNameChanges)
{
    entry.becomeLinkTo("/media/u/Ferrobank");
    entry.becomeLinkTo("/media/u/Ferrobank1");
    EXPECT_EQ(std::filesystem::read_symlink(path), "/media/u/Ferrobank1");
    EXPECT_EQ(entry.kind(), HomeEntry::Kind::OwnLink);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST_F(HomeEntryTest, linkAndEmptyFolderGiveWayToEachOther)
{
    entry.becomeLinkTo("/run/media/u/Ferrobank");
    entry.becomeMountPoint();
    EXPECT_EQ(entry.kind(), HomeEntry::Kind::EmptyFolder);
    entry.becomeLinkTo("/run/media/u/Ferrobank");
    EXPECT_EQ(entry.kind(), HomeEntry::Kind::OwnLink);
}

TEST_F(HomeEntryTest, placeOfTheMountHelperIsOurOwnToo)
{
    const std::filesystem::path place = helperMountPoint(::geteuid());
    entry.becomeMountPoint();
    entry.becomeLinkTo(place);
    EXPECT_EQ(entry.kind(), HomeEntry::Kind::OwnLink);
    entry.becomeLinkTo("/media/u/Ferrobank");
    entry.becomeLinkTo(place);
    EXPECT_EQ(std::filesystem::read_symlink(path), place);
    std::filesystem::remove(path);
    std::filesystem::create_symlink("/run/ferrobank/4242/Ferrobank", path);
    EXPECT_EQ(entry.kind(), HomeEntry::Kind::Foreign) << "another user's";
}

TEST_F(HomeEntryTest, foreignThingsAreRefusedAndStay)
{
    for (const char* target : {"/elsewhere", "/media/other/Ferrobank", "/media/u/FerrobankX", "relative"}) {
        std::filesystem::create_symlink(target, path);
        EXPECT_EQ(entry.kind(), HomeEntry::Kind::Foreign) << target;
        EXPECT_THROW(entry.becomeMountPoint(), Failure);
        EXPECT_THROW(entry.becomeLinkTo("/media/u/Ferrobank"), Failure);
        entry.removeIfOwn();
        EXPECT_EQ(std::filesystem::read_symlink(path), target);
        std::filesystem::remove(path);
    }
    std::ofstream(path) << "text";
    EXPECT_THROW(entry.requireFree(), Failure);
    std::filesystem::remove(path);
    std::filesystem::create_directories(path / "inside");
    EXPECT_THROW(entry.requireFree(), Failure);
    entry.removeIfOwn();
    EXPECT_TRUE(std::filesystem::exists(path / "inside"));
}

TEST_F(HomeEntryTest, linkThatLeadsThereAlreadyIsKept)
{
    std::filesystem::create_symlink("/somewhere", path);
    EXPECT_NO_THROW(entry.becomeLinkTo("/somewhere"));
}

} // namespace
} // namespace ferrobank::drive::testing
