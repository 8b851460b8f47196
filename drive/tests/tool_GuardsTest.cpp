#include "mounting/Volume.h"
#include "platform/FileDescriptor.h"
#include "platform/Files.h"
#include "testing/DriveFiles.h"
#include "testing/DriveHost.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <nlohmann/json.hpp>

namespace ferrobank::drive::testing {
namespace {

class Guards : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!volumesUnavailable().empty()) {
            GTEST_SKIP() << volumesUnavailable();
        }
        host = std::make_unique<DriveHost>();
    }

    /// The server has the space guard open on the drive, so an unmount without force finds it in use.
    [[nodiscard]] int ejectByForce() const { return ::umount2(host->paths().drive.c_str(), MNT_DETACH); }

    /// A drive with some files, unmounted.
    void makeDrive()
    {
        host->makeSmallStore();
        ASSERT_TRUE(host->serveAndMount()) << host->logText();
        for (unsigned number = 0; number < 30; ++number) {
            ASSERT_TRUE(
                writeRandomFile(host->paths().drive / std::to_string(number), 40'000 + number, number));
        }
        files = fingerprint(host->paths().drive);
        host->endServing(SIGTERM);
        ASSERT_FALSE(host->isMounted());
    }

    /// Overwrites a root of the metadata in both its copies, which the superblock tells the place of.
    void damageChunkTree() const
    {
        const std::string command = "btrfs inspect-internal dump-super '" + host->paths().image.string() +
                                    "' | awk '/^chunk_root[[:space:]]/{print $2}' > '" +
                                    (host->folder() / "root").string() + "'";
        ASSERT_EQ(::system(command.c_str()), 0);
        const std::string text = readSmallFile(host->folder() / "root").value_or("0");
        const long long address = std::atoll(text.c_str());
        ASSERT_GT(address, 0);
        std::fstream image(host->paths().image, std::ios::in | std::ios::out | std::ios::binary);
        const std::string garbage(16384, 'x');
        for (const long long copy : {address, address + (8LL << 20U)}) {
            image.seekp(copy);
            image.write(garbage.data(), static_cast<std::streamsize>(garbage.size()));
        }
    }

    std::unique_ptr<DriveHost> host;
    std::map<std::string, std::string> files;
};

TEST_F(Guards, imageThatIsAttachedAlreadyIsMountedFromThatDevice)
{
    makeDrive();
    ASSERT_EQ(runProgram({"losetup", "-f", host->paths().image.string()}), 0);
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    EXPECT_EQ(loopsOf(host->paths().image, Recognise::ByFile).size(), 1U);
    EXPECT_EQ(fingerprint(host->paths().drive), files);
}

TEST_F(Guards, imageReachedUnderAnotherNameIsFoundToo)
{
    makeDrive();
    const std::filesystem::path other = host->paths().home / "other-name";
    std::filesystem::create_hard_link(host->paths().image, other);
    ASSERT_EQ(runProgram({"losetup", "-f", other.string()}), 0);
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    EXPECT_EQ(loopsOf(host->paths().image, Recognise::ByFile).size(), 1U);
    EXPECT_EQ(fingerprint(host->paths().drive), files);
    host->endServing(SIGTERM);
    EXPECT_TRUE(loopsOf(host->paths().image, Recognise::ByFile).empty());
}

TEST_F(Guards, imageAttachedTwiceIsNotMounted)
{
    makeDrive();
    ASSERT_EQ(runProgram({"losetup", "-f", host->paths().image.string()}), 0);
    ASSERT_EQ(runProgram({"losetup", "-f", host->paths().image.string()}), 0);
    EXPECT_FALSE(host->serveAndMount());
    EXPECT_NE(host->attachError().find("attached more than once"), std::string::npos) << host->attachError();
}

TEST_F(Guards, mountOfASecondDeviceIsNotAdopted)
{
    makeDrive();
    const std::filesystem::path elsewhere = host->folder() / "elsewhere";
    std::filesystem::create_directories(elsewhere);
    ASSERT_EQ(runProgram({"losetup", "-f", host->paths().image.string()}), 0);
    ASSERT_EQ(runProgram({"losetup", "-f", host->paths().image.string()}), 0);
    const auto loops = loopsOf(host->paths().image, Recognise::ByFile);
    ASSERT_EQ(loops.size(), 2U);
    ASSERT_EQ(runProgram({"mount", "-o", "subvol=u/files", loops[1].device, elsewhere.string()}), 0);
    EXPECT_FALSE(host->serveAndMount());
    EXPECT_NE(host->attachError().find("attached twice"), std::string::npos) << host->attachError();
    EXPECT_FALSE(host->isMounted());
}

TEST_F(Guards, readOnlyDeviceOfAnotherProgramIsNamed)
{
    makeDrive();
    ASSERT_EQ(runProgram({"losetup", "-r", "-f", host->paths().image.string()}), 0);
    EXPECT_FALSE(host->serveAndMount());
    EXPECT_NE(host->attachError().find("read-only"), std::string::npos) << host->attachError();
}

TEST_F(Guards, checkNamesASecondDevice)
{
    makeDrive();
    ASSERT_TRUE(host->serveAndMount());
    ASSERT_EQ(runProgram({"losetup", "-r", "-f", host->paths().image.string()}), 0);
    const std::string rows = host->run({"check", "--json"}).output;
    EXPECT_NE(rows.find("attached more than once"), std::string::npos) << rows;
}

TEST_F(Guards, imageReplacedByALinkIsRefusedAndUntouched)
{
    makeDrive();
    const std::filesystem::path moved = host->paths().home / "moved";
    std::filesystem::rename(host->paths().image, moved);
    std::filesystem::create_symlink(moved, host->paths().image);
    EXPECT_FALSE(host->serveAndMount());
    EXPECT_NE(host->attachError().find("is a link"), std::string::npos) << host->attachError();
    EXPECT_TRUE(std::filesystem::is_symlink(host->paths().image));
}

TEST_F(Guards, imageOfAnotherUserIsRefused)
{
    makeDrive();
    ASSERT_EQ(::chown(host->paths().image.c_str(), 12345, 12345), 0);
    EXPECT_FALSE(host->serveAndMount());
    EXPECT_NE(host->attachError().find("belongs to another user"), std::string::npos) << host->attachError();
}

TEST_F(Guards, missingImageIsNeverReplacedByANewOne)
{
    makeDrive();
    std::filesystem::remove(host->paths().image);
    EXPECT_FALSE(host->serveAndMount());
    EXPECT_NE(host->attachError().find("The drive's data is missing"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(host->paths().image));
}

TEST_F(Guards, imageWithoutAnySuperblockIsNeverFormatted)
{
    makeDrive();
    writeMagics(host->paths().image, "XXXXXXXX");
    EXPECT_FALSE(host->serveAndMount());
    EXPECT_NE(host->attachError().find("holds no volume"), std::string::npos) << host->attachError();
    EXPECT_EQ(nlohmann::json::parse(host->status())["installed"], false);
    writeMagics(host->paths().image, "_BHRfS_M");
    ASSERT_EQ(host->run({"restart"}).status, 0);
    EXPECT_EQ(fingerprint(host->paths().drive), files);
}

TEST_F(Guards, imageCutInItsUnusedTailGetsItsLengthBack)
{
    makeDrive();
    cutUnusedTail(host->paths().image);
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    EXPECT_EQ(fingerprint(host->paths().drive), files);
    EXPECT_NE(host->logText().find("had been cut short"), std::string::npos);
}

TEST_F(Guards, imageCutInItsDataIsNotMounted)
{
    makeDrive();
    std::filesystem::resize_file(host->paths().image, std::uint64_t{24} << 20U);
    EXPECT_FALSE(host->serveAndMount());
    EXPECT_NE(host->attachError().find("damaged"), std::string::npos) << host->attachError();
}

TEST_F(Guards, foreignFolderInThePlaceOfTheDriveIsNotTouched)
{
    std::filesystem::create_directories(host->paths().drive);
    std::ofstream(host->paths().drive / "mine") << "text";
    EXPECT_FALSE(host->serveAndMount());
    EXPECT_EQ(host->attachError(),
              "~/Ferrobank already exists and holds other files. Move it away, then restart Ferrobank.");
    EXPECT_EQ(readSmallFile(host->paths().drive / "mine"), "text");
    std::filesystem::rename(host->paths().drive, host->paths().home / "Moved");
    EXPECT_EQ(host->run({"restart"}).status, 0);
    EXPECT_TRUE(host->isMounted());
}

TEST_F(Guards, foreignLinkInThePlaceOfTheDriveIsNotTouched)
{
    std::filesystem::create_symlink("/nowhere", host->paths().drive);
    EXPECT_FALSE(host->serveAndMount());
    EXPECT_NE(host->attachError().find("already exists"), std::string::npos);
    EXPECT_EQ(std::filesystem::read_symlink(host->paths().drive), "/nowhere");
}

TEST_F(Guards, ejectedDriveIsReportedAndComesBackOnlyOnRequest)
{
    makeDrive();
    ASSERT_TRUE(host->serveAndMount());
    ASSERT_EQ(ejectByForce(), 0);
    EXPECT_TRUE(waitUntil([&] { return !host->attachError().empty(); }));
    EXPECT_EQ(host->attachError(), "The drive was ejected. Restart Ferrobank to mount it again.");
    EXPECT_FALSE(host->isMounted());
    ASSERT_EQ(host->run({"restart"}).status, 0);
    EXPECT_EQ(fingerprint(host->paths().drive), files);
}

TEST_F(Guards, driveMountedAgainByHandIsAdopted)
{
    makeDrive();
    ASSERT_TRUE(host->serveAndMount());
    ASSERT_EQ(ejectByForce(), 0);
    ASSERT_TRUE(waitUntil([&] { return !host->attachError().empty(); }));
    ASSERT_EQ(runProgram({"mount", "-o", "loop,subvol=u/files", host->paths().image.string(),
                          host->paths().drive.string()}),
              0);
    EXPECT_TRUE(waitUntil([&] { return host->attachError().empty(); }));
}

TEST_F(Guards, lazilyUnmountedDriveComesBackFromTheSameDeviceWithItsOpenFiles)
{
    makeDrive();
    ASSERT_TRUE(host->serveAndMount());
    std::ofstream writing(host->paths().drive / "open");
    writing << "one ";
    writing.flush();
    ASSERT_EQ(::umount2(host->paths().drive.c_str(), MNT_DETACH), 0);
    ASSERT_TRUE(waitUntil([&] { return !host->attachError().empty(); }));
    ASSERT_EQ(loopsOf(host->paths().image, Recognise::ByFile).size(), 1U);
    ASSERT_EQ(host->run({"restart"}).status, 0) << host->logText();
    EXPECT_EQ(loopsOf(host->paths().image, Recognise::ByFile).size(), 1U);
    writing << "two";
    writing.close();
    EXPECT_EQ(readSmallFile(host->paths().drive / "open"), "one two");
    EXPECT_EQ(host->run({"restart"}).status, 0) << host->logText();
    EXPECT_EQ(readSmallFile(host->paths().drive / "open"), "one two");
}

TEST_F(Guards, deletedStoreIsNotUnmountedSoThatFilesCanBeSaved)
{
    makeDrive();
    ASSERT_TRUE(host->serveAndMount());
    std::filesystem::remove(host->paths().image);
    const ToolRun restart = host->run({"restart"});
    EXPECT_EQ(restart.status, 1);
    EXPECT_NE(restart.errorText.find("Copy your files out"), std::string::npos) << restart.errorText;
    EXPECT_EQ(host->run({"uninstall"}).status, 1);
    EXPECT_EQ(fingerprint(host->paths().drive), files);
    EXPECT_NE(host->run({"check", "--json"}).output.find("deleted while in use"), std::string::npos);
    host->endServing(SIGTERM);
    EXPECT_EQ(fingerprint(host->paths().drive), files);
}

TEST_F(Guards, structuresAreCheckedAfterAnUncleanStop)
{
    makeDrive();
    ASSERT_TRUE(host->serveAndMount());
    host->endServing(SIGKILL);
    host->dropDrive();
    ASSERT_TRUE(host->serveAndMount());
    EXPECT_NE(host->logText().find("are sound"), std::string::npos);
    EXPECT_EQ(fingerprint(host->paths().drive), files);
}

TEST_F(Guards, damagedStructuresAreNotMounted)
{
    makeDrive();
    std::ofstream(host->paths().openMarker) << "x";
    damageChunkTree();
    EXPECT_FALSE(host->serveAndMount());
    EXPECT_NE(host->attachError().find("structures are damaged"), std::string::npos) << host->attachError();
    EXPECT_NE(host->logText().find("btrfs check ended with"), std::string::npos);
    EXPECT_NE(host->run({"check", "--json"}).output.find("structures are damaged"), std::string::npos);
}

TEST_F(Guards, fullHostAtCreationLeavesNothingBehind)
{
    const std::filesystem::path filler = host->disk().mountPoint() / "filler";
    ASSERT_EQ(::system(("fallocate -l 3700M " + filler.string()).c_str()), 0);
    EXPECT_FALSE(host->serveAndMount());
    EXPECT_NE(host->attachError().find("Free some space"), std::string::npos) << host->attachError();
    EXPECT_FALSE(std::filesystem::exists(host->paths().image));
    EXPECT_NE(host->run({"check", "--json"}).output.find(R"("action":"storage-settings")"),
              std::string::npos);
    std::filesystem::remove(filler);
    EXPECT_EQ(host->run({"restart"}).status, 0);
}

TEST_F(Guards, unwritableHomeIsSaidPlainly)
{
    host->disk().remount("ro");
    const ToolRun serve = host->run({"serve"});
    EXPECT_EQ(serve.status, 1);
    EXPECT_NE(serve.errorText.find("mounted read-only"), std::string::npos) << serve.errorText;
    EXPECT_EQ(host->run({"restart"}).errorText, serve.errorText);
    host->disk().remount("rw");
}

TEST_F(Guards, kernelWithoutBtrfsIsSaidPlainlyAndTheDriveComesBackWithOneThatHasIt)
{
    makeDrive();
    // A list without it in the kernel's place, and a mount that fails, which is when the list is looked at.
    const std::filesystem::path list = host->folder() / "filesystems";
    std::ofstream(list) << "nodev\ttmpfs\n\text4\n";
    ASSERT_EQ(::mount(list.c_str(), "/proc/filesystems", nullptr, MS_BIND, nullptr), 0);
    const std::filesystem::path whole = host->folder() / "whole";
    ASSERT_EQ(
        ::system(("cp --sparse=always '" + host->paths().image.string() + "' " + whole.string()).c_str()), 0);
    damageChunkTree();
    EXPECT_FALSE(host->serveAndMount());
    EXPECT_EQ(host->attachError(), "This system's kernel has no Btrfs support.");

    ASSERT_EQ(
        ::system(
            ("cp --sparse=always " + whole.string() + " '" + host->paths().image.string() + "'").c_str()),
        0);
    ASSERT_EQ(::umount("/proc/filesystems"), 0);
    EXPECT_EQ(host->run({"restart"}).status, 0) << host->logText();
    EXPECT_EQ(fingerprint(host->paths().drive), files);
}

TEST_F(Guards, hostThatCopiesOnWriteDoesNotDoSoBelowTheImage)
{
    host.reset();
    host = std::make_unique<DriveHost>("btrfs");
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    const FileDescriptor image(::open(host->paths().image.c_str(), O_RDONLY | O_CLOEXEC));
    int flags = 0;
    ASSERT_EQ(::ioctl(image.get(), FS_IOC_GETFLAGS, &flags), 0);
    EXPECT_NE(flags & FS_NOCOW_FL, 0);
}

} // namespace
} // namespace ferrobank::drive::testing
