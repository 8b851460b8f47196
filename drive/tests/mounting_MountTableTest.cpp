#include "mounting/MountTable.h"

#include <gtest/gtest.h>

namespace ferrobank::drive::testing {
namespace {

TEST(MountTable, readsFieldsAroundTheOptionalOnes)
{
    const auto entries = parseMountTable("36 35 98:0 /u/files /home/u/My\\040Drive rw,noatime master:1 "
                                         "shared:7 - btrfs /dev/loop0 rw,discard\n"
                                         "37 35 98:1 / /media ro,nosuid - ext4 /dev/sda1 rw\n"
                                         "38 35 98:2 / /aborted rw - btrfs /dev/loop1 ro,discard\n");
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].root, "/u/files");
    EXPECT_EQ(entries[0].mountPoint, "/home/u/My Drive");
    EXPECT_EQ(entries[0].fileSystem, "btrfs");
    EXPECT_EQ(entries[0].source, "/dev/loop0");
    EXPECT_FALSE(entries[0].readOnly);
    EXPECT_TRUE(entries[1].readOnly) << "mounted read-only";
    EXPECT_TRUE(entries[2].readOnly) << "file system gone read-only";
}

TEST(MountTable, undoesEveryEscapeOfTheKernel)
{
    const auto entries = parseMountTable("1 2 0:1 / /a\\011b\\012c\\134d rw - tmpfs none rw\n");
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].mountPoint, "/a\tb\nc\\d");
}

TEST(MountTable, optionsThatOnlyBeginWithRoAreNotReadOnly)
{
    const auto entries = parseMountTable("1 2 0:1 / /a rw,rootcontext=x - btrfs /dev/loop0 rw,rota\n");
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_FALSE(entries[0].readOnly);
}

TEST(MountTable, brokenLinesAreLeftOut)
{
    EXPECT_TRUE(parseMountTable("").empty());
    EXPECT_TRUE(parseMountTable("nonsense\n1 2 3 - \n1 2 0:1 / /a rw - btrfs\n").empty());
}

TEST(MountTable, knowsTheRootOfThisSystem)
{
    bool found = false;
    for (const MountEntry& entry : readMountTable()) {
        found = found || entry.mountPoint == "/";
    }
    EXPECT_TRUE(found);
}

} // namespace
} // namespace ferrobank::drive::testing
