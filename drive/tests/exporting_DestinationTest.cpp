#include "platform/Failure.h"
#include "testing/ExportVolume.h"

#include <fcntl.h>
#include <sys/mount.h>

#include <fstream>

namespace ferrobank::drive {

namespace {

namespace fs = std::filesystem;
using testing::contents;
using testing::inventory;
using testing::kMiB;
using testing::plainBytes;
using testing::randomBytes;
using testing::runProgram;
using testing::TestVolume;
using testing::writeFile;

using Destination = testing::ExportVolume;

/// Why this machine cannot mount FAT, or empty.
std::string fatUnavailable()
{
    const bool known = runProgram({"/bin/sh", "-c",
                                   "modprobe vfat 2>/dev/null; grep -qw vfat /proc/filesystems && "
                                   "command -v mkfs.vfat >/dev/null"}) == 0;
    return known ? std::string() : "this machine's kernel has no FAT, or mkfs.vfat is missing";
}

TEST_F(Destination, missingOrEmptyFolderIsTaken)
{
    EXPECT_EQ(refusal(copy()), "");
    EXPECT_FALSE(fs::exists(copy()));
    fs::create_directory(copy());
    EXPECT_EQ(refusal(copy()), "");
    EXPECT_EQ(refusal(copy().string() + "/"), "");
    EXPECT_TRUE(fs::is_empty(copy()));
}

TEST_F(Destination, folderWithFilesIsRefused)
{
    writeFile(copy() / "mine", "x");
    EXPECT_EQ(refusal(copy()), copy().string() + " already holds files. Choose an empty folder.");
    EXPECT_EQ(contents(copy()).size(), 1U);
}

TEST_F(Destination, folderWithTheMarkOfAnotherDriveIsRefused)
{
    {
        const Staging staging(copy(), "it", "11111111-2222-3333-4444-555555555555");
    }
    writeFile(copy() / kIncompleteMark / "files/a", "of that drive");
    EXPECT_EQ(refusal(copy()), copy().string() + " already holds files. Choose an empty folder.");
}

TEST_F(Destination, missingParentIsRefused)
{
    EXPECT_EQ(refusal(home() / "none" / "copy"),
              "The folder " + (home() / "none").string() + " does not exist.");
}

TEST_F(Destination, fileIsRefused)
{
    writeFile(home() / "file", "x");
    EXPECT_EQ(refusal(home() / "file"),
              (home() / "file").string() + " is not a folder. Choose an empty folder.");
}

TEST_F(Destination, placesOnTheDriveAreRefusedWhateverLeadsThere)
{
    const std::string tail = " lies on the drive itself. Choose a folder on another disk.";
    fs::create_directory(root() / "inside");
    EXPECT_EQ(refusal(root()), root().string() + tail);
    EXPECT_EQ(refusal(root() / "inside"), (root() / "inside").string() + tail);
    EXPECT_EQ(refusal(root() / "new"), (root() / "new").string() + tail);
    fs::create_directory_symlink(root() / "inside", home() / "link");
    EXPECT_EQ(refusal(home() / "link"), (home() / "link").string() + tail);
    EXPECT_EQ(refusal(home() / "link/../new"), (home() / "link/../new").string() + tail);
    fs::create_directory(home() / "bound");
    ASSERT_EQ(::mount((root() / "inside").c_str(), (home() / "bound").c_str(), nullptr, MS_BIND, nullptr), 0);
    EXPECT_EQ(refusal(home() / "bound"), (home() / "bound").string() + tail);
    EXPECT_EQ(::umount((home() / "bound").c_str()), 0);
    ASSERT_EQ(runProgram({"btrfs", "-q", "subvolume", "create", (root() / "volume").string()}), 0);
    EXPECT_EQ(refusal(root() / "volume"), (root() / "volume").string() + tail);
}

TEST_F(Destination, placesInTheStoreAreRefused)
{
    EXPECT_EQ(refusal(home() / "store"),
              (home() / "store").string() + " lies in the drive's own store. Choose another folder.");
    EXPECT_EQ(refusal(home() / "store/copy"),
              (home() / "store/copy").string() + " lies in the drive's own store. Choose another folder.");
    EXPECT_EQ(refusal(home() / "store of mine"), "");
}

TEST_F(Destination, readOnlyDiskIsRefused)
{
    TestVolume disk(home(), "disk", "ext4", 32 * kMiB);
    disk.remount("ro");
    EXPECT_EQ(refusal(disk.mountPoint() / "copy"),
              (disk.mountPoint() / "copy").string() + " cannot be written: Read-only file system.");
}

TEST_F(Destination, folderOfSomebodyElseIsRefused)
{
    fs::create_directory(copy());
    fs::permissions(copy(), fs::perms(0755));
    const std::string expected = copy().string() + " cannot be written: Permission denied.";
    EXPECT_TRUE(testing::asOrdinaryUser([&] { return refusal(copy()) == expected; }));
}

TEST_F(Destination, smallDiskIsRefusedWithBothFigures)
{
    writeFile(root() / "a", plainBytes(40 * kMiB, 1));
    const TestVolume disk(home(), "disk", "ext4", 16 * kMiB);
    const std::string sentence = refusal(disk.mountPoint() / "copy");
    EXPECT_TRUE(sentence.starts_with("The files need 42.8 MB, but " + (disk.mountPoint() / "copy").string() +
                                     " has only "))
        << sentence;
    EXPECT_TRUE(sentence.ends_with(" MB free.")) << sentence;
    EXPECT_FALSE(fs::exists(disk.mountPoint() / "copy"));
}

TEST_F(Destination, fatDiskIsRefusedWithTheFirstFileThatDoesNotFit)
{
    if (const std::string reason = fatUnavailable(); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    writeFile(root() / "program", "x");
    fs::permissions(root() / "program", fs::perms(0755));
    const TestVolume stick(home(), "stick", "vfat", 32 * kMiB, "fmask=0133,dmask=0022");
    const fs::path destination = stick.mountPoint() / "copy";
    const std::string tail =
        ", which " + destination.string() + " cannot hold. Choose a folder on another disk.";
    EXPECT_EQ(refusal(destination), "“program” has permissions" + tail);
    fs::permissions(root() / "program", fs::perms(0644));
    EXPECT_EQ(refusal(destination), "");
    fs::create_symlink("program", root() / "link");
    EXPECT_EQ(refusal(destination), "“link” is a symbolic link" + tail);
    fs::remove(root() / "link");
    fs::create_hard_link(root() / "program", root() / "again");
    EXPECT_NE(refusal(destination).find(" is a hard link"), std::string::npos);
    fs::remove(root() / "again");
    writeFile(root() / "a:b\n", "x");
    EXPECT_EQ(refusal(destination), "“a:b\\n” has a name" + tail);
    EXPECT_TRUE(fs::is_empty(stick.mountPoint()));
}

TEST_F(Destination, fatDiskRefusesFilesAboveFourGigabytes)
{
    if (const std::string reason = fatUnavailable(); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    writeFile(root() / "large", "x");
    fs::resize_file(root() / "large", std::uintmax_t{1} << 32U);
    const TestVolume stick(home(), "stick", "vfat", 32 * kMiB, "fmask=0133,dmask=0022");
    EXPECT_NE(refusal(stick.mountPoint() / "copy").find("“large” is larger than 4 GB"), std::string::npos);
}

TEST_F(Destination, fatDiskTakesWhatItCanHold)
{
    if (const std::string reason = fatUnavailable(); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    writeFile(root() / "photos/one.jpg", randomBytes(3 * kMiB, 1));
    writeFile(root() / "notes.txt", "notes");
    writeFile(root() / "sparse.bin", "start");
    fs::resize_file(root() / "sparse.bin", kMiB);
    const TestVolume stick(home(), "stick", "vfat", 32 * kMiB, "fmask=0133,dmask=0022");
    ExportRequest toStick = request();
    toStick.destination = stick.mountPoint() / "copy";
    const ExportResult result = exportFiles(toStick, {}, {});
    EXPECT_EQ(result.end, ExportResult::End::Verified) << result.text;
    EXPECT_EQ(contents(toStick.destination), contents(root()));
}

TEST_F(Destination, refusalChangesNothing)
{
    fillDrive();
    writeFile(copy() / "mine", "x");
    const auto before = inventory(root());
    const auto destination = inventory(copy());
    EXPECT_THROW(static_cast<void>(run()), Failure);
    EXPECT_EQ(inventory(root()), before);
    EXPECT_EQ(inventory(copy()), destination);
    EXPECT_FALSE(hasSnapshots());
}

TEST_F(Destination, driveThatIsNotMountedIsRefused)
{
    volume().unmount();
    EXPECT_EQ(refusal(copy()), "The drive at " + root().string() + " is not mounted.");
    volume().mount();
}

} // namespace

} // namespace ferrobank::drive
