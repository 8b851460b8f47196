#include "platform/Failure.h"
#include "testing/ExportVolume.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <fstream>

namespace ferrobank::drive {

namespace {

namespace fs = std::filesystem;
using testing::contents;
using testing::inventory;
using testing::readFile;
using testing::runProgram;
using testing::writeFile;
using End = ExportResult::End;

using Resume = testing::ExportVolume;

TEST_F(Resume, afterVerifiedAndAfterMovingUpTheCopyGoesOn)
{
    fillDrive();
    {
        Export first(request(), {}, {});
        ASSERT_EQ(first.copy().end, End::Verified);
    }
    {
        Export second(request(), {}, {});
        const ExportResult result = second.copy();
        ASSERT_EQ(result.end, End::Verified) << result.text;
        EXPECT_LT(result.copied, 3U) << "only what has several names is made anew";
        second.publish();
    }
    EXPECT_EQ(inventory(copy()), inventory(root()));
    EXPECT_TRUE(hasMark());
    const ExportResult third = run();
    EXPECT_EQ(third.end, End::Verified) << third.text;
    EXPECT_EQ(inventory(copy()), inventory(root()));
    EXPECT_FALSE(hasMark());
    EXPECT_EQ(contents(copy()).size(), contents(root()).size());
}

TEST_F(Resume, dropsWhatWasDeletedOnTheDriveMeanwhile)
{
    fillDrive();
    {
        Export first(request(), {}, {});
        ASSERT_EQ(first.copy().end, End::Verified);
        first.publish();
    }
    fs::remove(root() / "plain.txt");
    fs::remove_all(root() / "locked");
    fs::remove(root() / "empty");
    fs::create_directory(root() / "empty");
    fs::remove(root() / "empty folder");
    writeFile(root() / "empty folder", "a file now");
    const ExportResult result = run();
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_EQ(inventory(copy()), inventory(root()));
}

TEST_F(Resume, neverTouchesAFileThatTheUserPutThere)
{
    fillDrive();
    {
        Export first(request(), {}, {});
        ASSERT_EQ(first.copy().end, End::Verified);
    }
    writeFile(copy() / "mine", "the user's");
    writeFile(copy() / "plain.txt", "the user's, with the name of one on the drive");
    EXPECT_EQ(refusal(copy()), "“plain.txt” in " + copy().string() +
                                   " is not from the drive. Move it away or choose another folder.");
    fs::rename(copy() / "plain.txt", copy() / "moved away");
    EXPECT_EQ(run().end, End::Verified);
    EXPECT_EQ(readFile(copy() / "mine"), "the user's");
    EXPECT_EQ(readFile(copy() / "moved away"), "the user's, with the name of one on the drive");
    EXPECT_EQ(readFile(copy() / "plain.txt"), "plain");
}

TEST_F(Resume, fileThatAppearsWhileTheCopyIsMadeIsNotReplaced)
{
    fillDrive();
    Export whole(request(), {}, {});
    ASSERT_EQ(whole.copy().end, End::Verified);
    writeFile(copy() / "plain.txt", "the user's");
    EXPECT_THROW(whole.publish(), Failure);
    EXPECT_EQ(readFile(copy() / "plain.txt"), "the user's");
    EXPECT_TRUE(hasMark());
    fs::remove(copy() / "plain.txt");
    EXPECT_EQ(run().end, End::Verified);
    EXPECT_EQ(inventory(copy()), inventory(root()));
}

TEST_F(Resume, copyThatTheUserHasEditedSinceIsLeftToHim)
{
    fillDrive();
    writeFile(root() / "folder/document", "from the drive");
    for (const char* edited : {"plain.txt", "folder/document"}) {
        {
            Export first(request(), {}, {});
            ASSERT_EQ(first.copy().end, End::Verified);
            first.publish();
        }
        writeFile(copy() / edited, "edited in the copy");
        EXPECT_EQ(refusal(copy()), "“" + std::string(edited) + "” in " + copy().string() +
                                       " was changed after it was copied there. Choose another folder.");
        EXPECT_EQ(readFile(copy() / edited), "edited in the copy");
        fs::remove_all(copy());
    }
}

TEST_F(Resume, leftoverTrialsAndAnEmptyMarkAreNoFiles)
{
    writeFile(root() / "a", "x");
    writeFile(copy() / ".ferrobank-trial-abcdef/file", "");
    fs::create_directory(copy() / kIncompleteMark);
    const ExportResult result = run();
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_EQ(std::distance(fs::directory_iterator(copy()), {}), 1);
}

TEST_F(Resume, markOfAFinishedCopyGoesOnceItsDriveIsGone)
{
    writeFile(root() / "a", "x");
    Export whole(request(), {}, {});
    ASSERT_EQ(whole.copy().end, End::Verified);
    finishEarlierExport(copy());
    EXPECT_TRUE(hasMark()) << "nothing has moved up yet";
    whole.publish();
    finishEarlierExport(copy());
    EXPECT_FALSE(hasMark());
    EXPECT_EQ(readFile(copy() / "a"), "x");
}

using Leaves = testing::ExportVolume;

TEST_F(Leaves, socketsOutAndNamesThem)
{
    writeFile(root() / "a", "x");
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = (root() / "socket").string();
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(listener);
    Export whole(request(), {}, {});
    ASSERT_EQ(whole.copy().end, End::Verified);
    volume().remount("ro");
    const ExportResult result = whole.bringUpToDate(root());
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_EQ(whole.leftOut().first(), std::vector<std::string>{"“socket” is a socket and not in the copy."});
}

TEST_F(Leaves, devicesOutWhereOnlyRootCouldMakeThem)
{
    writeFile(root() / "a", "x");
    ASSERT_EQ(::mknod((root() / "device").c_str(), S_IFCHR | 0600, 0x103), 0);
    ASSERT_EQ(runProgram({"chown", "-R", std::to_string(testing::kOrdinaryUser), home().string()}), 0);
    EXPECT_TRUE(testing::asOrdinaryUser([&] {
        LeftOut leftOut;
        const ExportResult result = exportFiles(request(), {}, {}, &leftOut);
        EXPECT_EQ(result.end, End::Verified) << result.text;
        EXPECT_EQ(leftOut.first(),
                  std::vector<std::string>{"“device” is no ordinary file and not in the copy."});
        return !::testing::Test::HasFailure();
    }));
}

TEST_F(Leaves, inodeFlagsBehindAndNamesThem)
{
    writeFile(root() / "flagged", "x");
    const int file = ::open((root() / "flagged").c_str(), O_RDONLY | O_CLOEXEC);
    int flags = FS_NODUMP_FL;
    ASSERT_EQ(::ioctl(file, FS_IOC_SETFLAGS, &flags), 0);
    ::close(file);
    LeftOut leftOut;
    EXPECT_EQ(exportFiles(request(), {}, {}, &leftOut).end, End::Verified);
    ASSERT_EQ(leftOut.count(), 1U);
    EXPECT_EQ(leftOut.first()[0], "“flagged” is copied without its flags d.");
}

TEST_F(Leaves, theDrivesOwnIconOutAndTheUsersFilesOfThoseNamesIn)
{
    writeFile(root() / ".VolumeIcon.icns", "icon");
    writeFile(root() / ".VolumeIcon.png", "icon");
    writeFile(root() / ".xdg-volume-info", "[Volume Info]\nName=Ferrobank\nIconFile=.VolumeIcon.png\n");
    writeFile(root() / ".directory", "[Desktop Entry]\nIcon=" + root().string() + "/.VolumeIcon.png\n");
    writeFile(root() / "folder/.directory", "[Desktop Entry]\nIcon=/x/.VolumeIcon.png\n");
    ASSERT_EQ(run().end, End::Verified);
    EXPECT_EQ(contents(copy()).size(), 1U);
    EXPECT_TRUE(fs::exists(copy() / "folder/.directory"));
    fs::remove_all(copy());
    writeFile(root() / ".directory", "[Desktop Entry]\nIcon=/x/.VolumeIcon.png\n\n[Dolphin]\nViewMode=1\n");
    writeFile(root() / ".xdg-volume-info", "[Volume Info]\nName=Mine\n");
    ASSERT_EQ(run().end, End::Verified);
    EXPECT_EQ(contents(copy()).size(), 3U);
}

TEST_F(Leaves, nothingOutForTheLengthOfItsPath)
{
    // Forty levels of two hundred letters: twice what the system takes as a path.
    int folder = ::open(root().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::string name(200, 'n');
    for (int depth = 0; depth < 40; ++depth) {
        ASSERT_EQ(::mkdirat(folder, name.c_str(), 0755), 0);
        const int next = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(folder);
        folder = next;
    }
    const int file = ::openat(folder, "file", O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    ASSERT_EQ(::write(file, "deep", 4), 4);
    ::close(file);
    ASSERT_EQ(::linkat(folder, "file", folder, "second", 0), 0);
    ::close(folder);
    {
        Export first(request(), {}, {});
        const ExportResult result = first.copy();
        ASSERT_EQ(result.end, End::Verified) << result.text;
        EXPECT_EQ(result.files, 1U) << "one file with two names";
    }
    Export again(request(), {}, {});
    ASSERT_EQ(again.copy().end, End::Verified);
    volume().remount("ro");
    const ExportResult result = again.bringUpToDate(root());
    EXPECT_EQ(result.end, End::Verified) << result.text;
    again.publish();
    again.finish();
}

} // namespace

} // namespace ferrobank::drive
