#include "mounting/OldFstabLines.h"

#include <gtest/gtest.h>

namespace ferrobank::drive::testing {
namespace {

std::string lineOf(const std::string& home)
{
    return home + "/Library/Application\\040Support/Ferrobank/store/drive.btrfs " + home +
           "/Ferrobank btrfs loop,user,noauto,exec,noatime,compress=zstd:1,discard=sync,subvol=u/files,"
           "user_subvol_rm_allowed,x-gvfs-show,x-gvfs-name=Ferrobank 0 0\n";
}

std::string beginOf(const std::string& user)
{
    return "# Ferrobank drive of user " + user + ": begin\n";
}

std::string endOf(const std::string& user)
{
    return "# Ferrobank drive of user " + user + ": end\n";
}

std::string blockOf(const std::string& user, const std::string& home)
{
    return beginOf(user) + lineOf(home) + endOf(user);
}

std::string withoutAny(const std::string& text)
{
    return withoutOldFstabLines(text, [](const OldFstabLine&) { return true; });
}

const std::string kForeign =
    "# static file systems\n/dev/sda1 / ext4 defaults 0 1\n/dev/sdb1 /data xfs defaults 0 2\n";

TEST(OldFstabLines, wholeBlockGoesAndEveryOtherByteStays)
{
    const std::string text = kForeign + blockOf("1000", "/home/u") + "\n\tlast line without end";
    EXPECT_EQ(withoutAny(text), kForeign + "\n\tlast line without end");
    EXPECT_EQ(withoutAny(kForeign), kForeign);
    EXPECT_EQ(withoutAny(""), "");
}

TEST(OldFstabLines, lostEndMarkTakesNoForeignLineWithIt)
{
    // What somebody's edit and then two changes by former versions left behind.
    const std::string text =
        beginOf("1000") + lineOf("/home/u") + kForeign + blockOf("1000", "/home/u") + "tmpfs /tmp tmpfs\n";
    EXPECT_EQ(withoutAny(text), kForeign + "tmpfs /tmp tmpfs\n");
}

TEST(OldFstabLines, foreignLineBetweenOurMarksStays)
{
    const std::string text = beginOf("1000") + "/dev/sdc1 /backup ext4 defaults 0 2\n" + endOf("1000");
    EXPECT_EQ(withoutAny(text), text);
    const std::string pushedIn =
        beginOf("1000") + "/dev/sdc1 /backup ext4\n" + lineOf("/home/u") + endOf("1000");
    EXPECT_EQ(withoutAny(pushedIn), beginOf("1000") + "/dev/sdc1 /backup ext4\n");
}

TEST(OldFstabLines, lineWithoutAnyMarksGoesToo)
{
    EXPECT_EQ(withoutAny(kForeign + lineOf("/home/u") + kForeign), kForeign + kForeign);
    EXPECT_EQ(withoutAny(lineOf("/home/u").substr(0, lineOf("/home/u").size() - 1)), "");
}

TEST(OldFstabLines, whatAnAdministratorMadeOfItIsNotOurs)
{
    const std::string ours = lineOf("/home/u");
    std::string noUser = ours;
    noUser.replace(noUser.find("user,"), 5, "");
    std::string elsewhere = ours;
    elsewhere.replace(elsewhere.find("/home/u/Ferrobank"), 17, "/srv/drive");
    std::string otherHome = ours;
    otherHome.replace(otherHome.find("/home/u/Ferrobank"), 17, "/home/v/Ferrobank");
    for (const std::string& text : {"#" + ours, noUser, elsewhere, otherHome,
                                    std::string("/home/u/other.img /home/u/Ferrobank btrfs loop,user 0 0\n")})
    {
        EXPECT_EQ(withoutAny(text), text);
        EXPECT_TRUE(oldFstabLines(text).empty()) << text;
    }
}

TEST(OldFstabLines, onlyTheLinesThatAreMeantGo)
{
    const std::string text = blockOf("1000", "/home/u") + blockOf("1001", "/home/v");
    EXPECT_EQ(withoutOldFstabLines(text, [](const OldFstabLine& line) { return line.user == 1000U; }),
              blockOf("1001", "/home/v"));
}

TEST(OldFstabLines, userIsKnownOnlyWhenBothMarksNameTheSame)
{
    const std::string line = lineOf("/home/u");
    EXPECT_EQ(oldFstabLines(beginOf("1000") + line + endOf("1000")).at(0).user, 1000U);
    for (const std::string& text :
         {line, beginOf("1000") + line, line + endOf("1000"), beginOf("1000") + line + endOf("1001"),
          beginOf("") + line + endOf(""), beginOf("-1") + line + endOf("-1"),
          beginOf("99999999999") + line + endOf("99999999999")})
    {
        ASSERT_EQ(oldFstabLines(text).size(), 1U) << text;
        EXPECT_FALSE(oldFstabLines(text).at(0).user) << text;
    }
}

TEST(OldFstabLines, escapesOfHomesAreUndone)
{
    EXPECT_EQ(oldFstabLines(lineOf("/home/a\\043b\\134c\\011d")).at(0).image,
              "/home/a#b\\c\td/Library/Application Support/Ferrobank/store/drive.btrfs");
}

} // namespace
} // namespace ferrobank::drive::testing
