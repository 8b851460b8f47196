#include "exporting/Snapshot.h"
#include "testing/ExportVolume.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

namespace ferrobank::drive {

namespace {

namespace fs = std::filesystem;
using testing::contents;
using testing::inventory;
using testing::kMiB;
using testing::plainBytes;
using testing::randomBytes;
using testing::readFile;
using testing::runProgram;
using testing::TestVolume;
using testing::writeFile;
using End = ExportResult::End;

using Faults = testing::ExportVolume;

/// Overwrites a file's bytes on the device while the volume is not mounted.
void damage(TestVolume& volume, const std::string& content)
{
    volume.unmount();
    const std::string image = readFile(volume.image());
    const std::size_t place = image.find(content.substr(content.size() / 2, 64));
    ASSERT_NE(place, std::string::npos);
    const int file = ::open(volume.image().c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(::pwrite(file, "damage", 6, static_cast<off_t>(place)), 6);
    ASSERT_EQ(::fsync(file), 0);
    ::close(file);
    volume.mount();
}

TEST_F(Faults, unreadableFileIsNamedAndTheOthersAreCopied)
{
    fillDrive();
    const std::string content = randomBytes(kMiB, 9);
    writeFile(root() / "bad/one", content);
    damage(volume(), content);
    const ExportResult result = run();
    EXPECT_EQ(result.end, End::Differences);
    ASSERT_FALSE(result.firstDifferences.empty());
    EXPECT_EQ(result.firstDifferences[0], "“bad/one” could not be read: Input/output error.");
    EXPECT_NE(result.text.find("“bad/one”"), std::string::npos);
    EXPECT_TRUE(hasMark());
    EXPECT_FALSE(fs::exists(copy() / "bad/one"));
    EXPECT_EQ(readFile(copy() / "large"), readFile(root() / "large"));
    EXPECT_FALSE(hasSnapshots());
}

TEST_F(Faults, fileWithoutPermissionKeepsTheCopyFromBeingWhole)
{
    writeFile(root() / "open", "x");
    writeFile(root() / "closed", "x");
    ASSERT_EQ(runProgram({"chown", "-R", std::to_string(testing::kOrdinaryUser), home().string()}), 0);
    ASSERT_EQ(::chown((root() / "closed").c_str(), 0, 0), 0);
    fs::permissions(root() / "closed", fs::perms(0600));
    EXPECT_TRUE(testing::asOrdinaryUser([&] {
        const ExportResult result = run();
        return result.end == End::Differences && result.text.find("“closed”") != std::string::npos;
    }));
    EXPECT_TRUE(hasMark());
    EXPECT_EQ(readFile(copy() / "open"), "x");
}

TEST_F(Faults, moreThanThreeDifferencesAreCounted)
{
    ASSERT_EQ(runProgram({"chown", "-R", std::to_string(testing::kOrdinaryUser), home().string()}), 0);
    for (int number = 0; number < 5; ++number) {
        writeFile(root() / std::to_string(number), "x");
        fs::permissions(root() / std::to_string(number), fs::perms(0600));
    }
    EXPECT_TRUE(testing::asOrdinaryUser([&] {
        const ExportResult result = run();
        return result.end == End::Differences && result.firstDifferences.size() == 3 &&
               result.differences >= 5;
    }));
}

TEST_F(Faults, diskThatFillsUpMeanwhileEndsTheCopyAndItGoesOnLater)
{
    for (int number = 0; number < 20; ++number) {
        writeFile(root() / std::to_string(number), plainBytes(kMiB, static_cast<std::uint64_t>(number)));
    }
    const TestVolume disk(home(), "disk", "ext4", 64 * kMiB);
    ExportRequest toDisk = request();
    toDisk.destination = disk.mountPoint() / "copy";
    const auto before = inventory(root());
    const ExportResult result =
        exportFiles(toDisk,
                    [&](const ExportProgress& progress) {
                        if (progress.phase == ExportProgress::Phase::Copying && progress.done == 0) {
                            std::ofstream filler(disk.mountPoint() / "filler");
                            filler << randomBytes(48 * kMiB, 1);
                        }
                    },
                    {});
    EXPECT_EQ(result.end, End::Failed);
    EXPECT_EQ(result.text, toDisk.destination.string() +
                               " is full. Free some space there and export again; the copy "
                               "goes on where it ended.");
    EXPECT_TRUE(fs::exists(toDisk.destination / kIncompleteMark));
    EXPECT_FALSE(hasSnapshots());
    EXPECT_EQ(inventory(root()), before);
    fs::remove(disk.mountPoint() / "filler");
    const ExportResult again = exportFiles(toDisk, {}, {});
    EXPECT_EQ(again.end, End::Verified) << again.text;
    EXPECT_EQ(contents(toDisk.destination), contents(root()));
    EXPECT_FALSE(fs::exists(toDisk.destination / kIncompleteMark));
}

TEST_F(Faults, cancelledExportGoesOnInTheSameFolder)
{
    fillDrive();
    std::stop_source stop;
    const ExportResult result = exportFiles(
        request(),
        [&](const ExportProgress& progress) {
            if (progress.phase == ExportProgress::Phase::Verifying) {
                stop.request_stop();
            }
        },
        stop.get_token());
    EXPECT_EQ(result.end, End::Cancelled);
    EXPECT_TRUE(hasMark());
    EXPECT_FALSE(hasSnapshots());
    const auto inodeOf = [&](const char* name) {
        struct stat status{};
        const fs::path staged = copy() / kIncompleteMark / "files" / name;
        EXPECT_EQ(::stat((fs::exists(staged) ? staged : copy() / name).c_str(), &status), 0);
        return status.st_ino;
    };
    const ino_t kept = inodeOf("plain.txt");
    const ExportResult again = run();
    EXPECT_EQ(again.end, End::Verified) << again.text;
    EXPECT_EQ(inodeOf("plain.txt"), kept);
    EXPECT_EQ(inventory(copy()), inventory(root()));
    EXPECT_FALSE(hasMark());
}

TEST_F(Faults, killedExportGoesOnWhateverTheMoment)
{
    fillDrive();
    for (int number = 0; number < 30; ++number) {
        writeFile(root() / "many" / std::to_string(number),
                  plainBytes(kMiB, static_cast<std::uint64_t>(number)));
    }
    const auto before = inventory(root());
    for (const useconds_t moment : {20'000U, 60'000U, 150'000U, 300'000U, 600'000U}) {
        const pid_t child = ::fork();
        if (child == 0) {
            try {
                ::_exit(run().end == End::Verified ? 0 : 1);
            } catch (const std::exception&) {
                ::_exit(2); // never on into the tests of its parent
            }
        }
        ::usleep(moment);
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(inventory(root()), before);
        // Without its mark a copy is finished, whether or not its maker lived to say so.
        if (fs::exists(copy()) && !fs::is_empty(copy()) && !hasMark()) {
            EXPECT_EQ(inventory(copy()), before);
            fs::remove_all(copy());
            break;
        }
        EXPECT_TRUE(WIFSIGNALED(status)) << "ended by itself with " << WEXITSTATUS(status);
    }
    const ExportResult result = run();
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_EQ(inventory(copy()), before);
    EXPECT_FALSE(hasSnapshots());
}

TEST_F(Faults, earlierCopyWithWrongContentIsMadeAnew)
{
    writeFile(root() / "a", plainBytes(kMiB, 1));
    std::stop_source stop;
    static_cast<void>(exportFiles(
        request(),
        [&](const ExportProgress& progress) {
            if (progress.phase == ExportProgress::Phase::Verifying) {
                stop.request_stop();
            }
        },
        stop.get_token()));
    ASSERT_TRUE(hasMark());
    // As after a power cut: size and time are right, the bytes are not.
    const fs::path earlier = copy() / kIncompleteMark / "files/a";
    const auto time = fs::last_write_time(earlier);
    writeFile(earlier, std::string(kMiB, '\0'));
    fs::last_write_time(earlier, time);
    EXPECT_EQ(run().end, End::Verified);
    EXPECT_EQ(readFile(copy() / "a"), readFile(root() / "a"));
}

TEST_F(Faults, filesPutBetweenTheTwoRunsStay)
{
    fillDrive();
    std::stop_source stop;
    stop.request_stop();
    static_cast<void>(exportFiles(request(), {}, stop.get_token()));
    ASSERT_TRUE(hasMark());
    writeFile(copy() / "mine", "keep me");
    EXPECT_EQ(run().end, End::Verified);
    EXPECT_EQ(readFile(copy() / "mine"), "keep me");
}

TEST_F(Faults, copyThatIsTamperedWithBeforeTheVerificationIsNotBelieved)
{
    fillDrive();
    const ExportResult result =
        exportFiles(request(),
                    [&](const ExportProgress& progress) {
                        if (progress.phase == ExportProgress::Phase::Verifying && progress.done == 0) {
                            const int file = ::open((staged() / "large").c_str(), O_WRONLY | O_CLOEXEC);
                            EXPECT_EQ(::pwrite(file, "?", 1, 3 * kMiB), 1);
                            ::close(file);
                            fs::remove(staged() / "link");
                            fs::create_symlink("elsewhere", staged() / "link");
                            fs::permissions(staged() / "program", fs::perms(0600));
                            fs::remove(staged() / "empty");
                        }
                    },
                    {});
    EXPECT_EQ(result.end, End::Differences);
    EXPECT_EQ(result.differences, 4U);
    EXPECT_EQ(result.firstDifferences.size(), 3U);
    EXPECT_TRUE(hasMark());
}

TEST_F(Faults, copyIsReadBackFromItsDisk)
{
    writeFile(root() / "a", randomBytes(4 * kMiB, 1));
    TestVolume disk(home(), "disk", "ext4", 64 * kMiB);
    ExportRequest toDisk = request();
    toDisk.destination = disk.mountPoint() / "copy";
    const std::string content = readFile(root() / "a");
    const ExportResult result =
        exportFiles(toDisk,
                    [&](const ExportProgress& progress) {
                        if (progress.phase == ExportProgress::Phase::Verifying && progress.done == 0) {
                            // The disk changes below the file system: only what is read anew can show it.
                            const std::string image = readFile(disk.image());
                            const std::size_t place = image.find(content.substr(2 * kMiB, 64));
                            ASSERT_NE(place, std::string::npos);
                            const int file = ::open(disk.image().c_str(), O_WRONLY | O_CLOEXEC);
                            EXPECT_EQ(::pwrite(file, "damage", 6, static_cast<off_t>(place)), 6);
                            ::close(file);
                            runProgram({"/bin/sh", "-c", "blockdev --flushbufs $(findmnt -no SOURCE \"$0\")",
                                        disk.mountPoint().string()});
                        }
                    },
                    {});
    EXPECT_EQ(result.end, End::Differences);
    EXPECT_EQ(result.firstDifferences, std::vector<std::string>{"“a” has another content in the copy."});
}

TEST_F(Faults, linkAmongTheLeftoversIsNotFollowed)
{
    const fs::path outside = root().parent_path() / "outside";
    fs::create_directory(outside);
    fs::permissions(outside, fs::perms(0755));
    fs::create_directories(root() / ".ferrobank");
    fs::create_directory_symlink(outside, root() / ".ferrobank/export-1");
    removeLeftoverSnapshots(root());
    EXPECT_EQ(fs::status(outside).permissions(), fs::perms(0755));
}

TEST_F(Faults, leftoverSnapshotsAreRemoved)
{
    fillDrive();
    const auto before = inventory(root());
    const pid_t child = ::fork();
    if (child == 0) {
        const DriveSnapshot snapshot(root(), {});
        ::kill(::getpid(), SIGKILL);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(hasSnapshots());
    EXPECT_TRUE(removeLeftoverSnapshots(root()));
    EXPECT_FALSE(hasSnapshots());
    EXPECT_EQ(inventory(root()), before);
    EXPECT_TRUE(removeLeftoverSnapshots(root()));
}

TEST_F(Faults, driveThatIsReadOnlyCannotBeFrozenAndSaysSo)
{
    writeFile(root() / "a", "x");
    volume().remount("ro");
    const ExportResult result = run();
    EXPECT_EQ(result.end, End::Failed);
    EXPECT_NE(result.text.find("Read-only file system."), std::string::npos) << result.text;
    volume().remount("rw");
}

} // namespace

} // namespace ferrobank::drive
