#include "mounting/FstabLine.h"

#include <gtest/gtest.h>

namespace ferrobank::drive::testing {
namespace {

const Paths kPaths = Paths::of("/home/u", {}, {});

TEST(FstabLine, spellsSpacesAsFstabWantsThem)
{
    EXPECT_EQ(
        fstabLine(kPaths),
        "/home/u/Library/Application\\040Support/Ferrobank/store/drive.btrfs /home/u/Ferrobank btrfs "
        "loop,user,noauto,exec,noatime,compress=zstd:1,discard=sync,subvol=u/files,user_subvol_rm_allowed,"
        "x-gvfs-show,x-gvfs-name=Ferrobank 0 0");
    EXPECT_NE(fstabLine(Paths::of("/home/a#b\\c\td", {}, {})).find("/home/a\\043b\\134c\\011d/Ferrobank"),
              std::string::npos);
}

TEST(FstabLine, isAddedOnceAndLeavesTheRestAlone)
{
    const std::string before = "# comment\n/dev/sda1 / ext4 defaults 0 1\n";
    const std::string once = withFstabLine(before, 1000, fstabLine(kPaths));
    EXPECT_TRUE(once.starts_with(before));
    EXPECT_TRUE(holdsFstabLine(once, fstabLine(kPaths)));
    EXPECT_EQ(withFstabLine(once, 1000, fstabLine(kPaths)), once);
}

TEST(FstabLine, fileWithoutFinalLineBreakStaysReadable)
{
    const std::string text = withFstabLine("/dev/sda1 / ext4 defaults 0 1", 1000, "line");
    EXPECT_TRUE(text.starts_with("/dev/sda1 / ext4 defaults 0 1\n#"));
}

TEST(FstabLine, removalTakesOnlyThisUsersLine)
{
    const std::string before = "a\n";
    std::string both = withFstabLine(before, 1000, "first");
    both = withFstabLine(both, 1001, "second");
    EXPECT_EQ(withoutFstabLine(both, 1000), withFstabLine(before, 1001, "second"));
    EXPECT_EQ(withoutFstabLine(withoutFstabLine(both, 1000), 1001), before);
    EXPECT_EQ(withoutFstabLine(before, 1000), before);
}

TEST(FstabLine, blockWhoseEndSomebodyRemovedStays)
{
    const std::string text =
        "a\n# Ferrobank drive of user 1000: begin\nline\n/dev/sdb1 /data ext4 defaults 0 2\n";
    EXPECT_EQ(withoutFstabLine(text, 1000), text);
}

TEST(FstabLine, aCommentedLineDoesNotCount)
{
    EXPECT_FALSE(holdsFstabLine("#" + fstabLine(kPaths) + "\n", fstabLine(kPaths)));
}

} // namespace
} // namespace ferrobank::drive::testing
