#include "platform/FileDescriptor.h"
#include "platform/Files.h"
#include "testing/DriveFiles.h"
#include "testing/DriveHost.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

namespace ferrobank::drive::testing {
namespace {

using nlohmann::json;

constexpr std::size_t kLetterBytes = 1'000'000;

class Integrity : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!volumesUnavailable().empty()) {
            GTEST_SKIP() << volumesUnavailable();
        }
        host = std::make_unique<DriveHost>();
    }

    [[nodiscard]] std::filesystem::path drive() const { return host->paths().drive; }

    /// A drive with a file "letter" of random bytes and some others, unmounted.
    void makeDrive()
    {
        host->makeSmallStore();
        ASSERT_TRUE(host->serveAndMount()) << host->logText();
        letter = randomBytes(kLetterBytes, 77);
        testing::writeFile(drive() / "letter", letter);
        for (unsigned number = 0; number < 10; ++number) {
            ASSERT_TRUE(writeRandomFile(drive() / std::to_string(number), 40'000 + number, number));
        }
        files = fingerprint(drive());
        host->endServing(SIGTERM);
        ASSERT_FALSE(host->isMounted());
    }

    /// Changes some bytes in the middle of the letter where they lie in the image.
    void rotLetter() const
    {
        const FileDescriptor image(::open(host->paths().image.c_str(), O_RDWR | O_CLOEXEC));
        const std::string wanted = letter.substr(kLetterBytes / 2, 64);
        for (off_t data = ::lseek(image.get(), 0, SEEK_DATA); data >= 0;) {
            const off_t hole = ::lseek(image.get(), data, SEEK_HOLE);
            std::string bytes(static_cast<std::size_t>(hole - data), '\0');
            ASSERT_EQ(::pread(image.get(), bytes.data(), bytes.size(), data), hole - data);
            if (const std::size_t at = bytes.find(wanted); at != std::string::npos) {
                ASSERT_EQ(::pwrite(image.get(), "rotten", 6, data + static_cast<off_t>(at)), 6);
                ASSERT_EQ(::fsync(image.get()), 0);
                return;
            }
            data = ::lseek(image.get(), hole, SEEK_DATA);
        }
        FAIL() << "the letter does not lie in the image as it is";
    }

    /// The last state of a row of `check --json`.
    [[nodiscard]] json row(const std::string& id, const std::vector<std::string>& more = {}) const
    {
        std::vector<std::string> arguments{"check", "--json"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const ToolRun run = host->run(arguments);
        EXPECT_EQ(run.status, 0) << "rows could be told";
        json found;
        std::istringstream lines(run.output);
        for (std::string line; std::getline(lines, line);) {
            const json parsed = json::parse(line);
            if (parsed["id"] == id) {
                found = parsed;
            }
        }
        return found;
    }

    [[nodiscard]] bool passes(const std::string& id) const { return row(id).value("state", "") == "pass"; }

    [[nodiscard]] bool isReading() const
    {
        return row("integrity").value("detail", "").find("being read once") != std::string::npos;
    }

    std::unique_ptr<DriveHost> host;
    std::string letter;
    std::map<std::string, std::string> files;
};

TEST_F(Integrity, imageThatLostDataPassesNoCheckBeforeEverythingWasReadAndNamesWhatIsGone)
{
    host->makeSmallStore(std::uint64_t{400} << 20U);
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    for (unsigned number = 0; number < 40; ++number) {
        ASSERT_TRUE(writeRandomFile(drive() / ("photo" + std::to_string(number)), 4'000'000, number))
            << host->logText();
    }
    host->endServing(SIGTERM);
    std::filesystem::resize_file(host->paths().image, std::uint64_t{200} << 20U);
    if (!host->serveAndMount()) {
        GTEST_SKIP() << "this kernel laid the metadata into the part that was lost: " << host->attachError();
    }
    std::size_t lost = 0;
    bool passedTooSoon = false;
    ASSERT_TRUE(waitUntil(
        [&] {
            const json found = row("integrity");
            passedTooSoon = passedTooSoon || found["state"] == "pass";
            return found.value("detail", "").find("could not be read: photo") != std::string::npos;
        },
        std::chrono::seconds(60)))
        << row("integrity") << host->logText();
    EXPECT_FALSE(passedTooSoon);
    for (const auto& [name, content] : fingerprint(drive())) {
        lost += content.ends_with("unreadable") ? 1U : 0U;
    }
    ASSERT_GT(lost, 0U);
    EXPECT_TRUE(row("integrity")["detail"].get<std::string>().starts_with(std::to_string(lost) + " file"))
        << row("integrity");
    host->endServing(SIGTERM);
    EXPECT_FALSE(passes("integrity")) << "also while nobody serves it";
    ASSERT_TRUE(host->serveAndMount());
    EXPECT_FALSE(passes("integrity")) << "nor after the next start";
}

TEST_F(Integrity, imageThatLostItsUnusedTailPassesOnceEverythingWasRead)
{
    makeDrive();
    cutUnusedTail(host->paths().image);
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    EXPECT_TRUE(waitUntil([&] { return passes("integrity"); }, std::chrono::seconds(60))) << row("integrity");
    EXPECT_NE(host->logText().find("files were read; 0 of them cannot be"), std::string::npos);
    EXPECT_TRUE(waitUntil([&] { return !std::filesystem::exists(host->paths().readingDue); }));
    EXPECT_EQ(fingerprint(drive()), files);
}

TEST_F(Integrity, rottenBlockIsNamedAndSettledOnceTheFileIsReplaced)
{
    makeDrive();
    rotLetter();
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    const ToolRun full = host->run({"check", "--full"});
    EXPECT_EQ(full.status, 1);
    EXPECT_NE(full.output.find("Cannot be read: letter\n"), std::string::npos) << full.output;
    ASSERT_TRUE(waitUntil([&] { return !passes("integrity"); }));
    EXPECT_NE(row("integrity")["detail"].get<std::string>().find("1 file could not be read: letter."),
              std::string::npos)
        << row("integrity");

    const ToolRun early = host->run({"check", "--acknowledge"});
    EXPECT_EQ(early.status, 1);
    EXPECT_NE(early.output.find("Still cannot be read: letter"), std::string::npos) << early.output;

    std::filesystem::remove(drive() / "letter");
    testing::writeFile(drive() / "letter", letter);
    const ToolRun settled = host->run({"check", "--acknowledge"});
    EXPECT_EQ(settled.status, 0) << settled.errorText;
    EXPECT_TRUE(waitUntil([&] { return passes("integrity"); })) << row("integrity");
    ASSERT_EQ(host->run({"restart"}).status, 0);
    EXPECT_TRUE(waitUntil([&] { return passes("integrity"); }))
        << "the kernel's count stays, but it is known: " << row("integrity");
}

TEST_F(Integrity, errorThatOnlyTheKernelHasCountedIsLookedIntoAndNamed)
{
    makeDrive();
    rotLetter();
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    // Whoever opens the letter makes the kernel count; the next start looks into it at the latest.
    EXPECT_TRUE(fingerprint(drive()).at("letter").ends_with("unreadable"));
    EXPECT_FALSE(passes("integrity"));
    ASSERT_EQ(host->run({"restart"}).status, 0);
    EXPECT_TRUE(waitUntil(
        [&] {
            return row("integrity").value("detail", "").find("could not be read: letter") !=
                   std::string::npos;
        },
        std::chrono::seconds(60)))
        << row("integrity");
}

TEST_F(Integrity, fullCheckOfASoundDriveReadsEverythingAndPasses)
{
    makeDrive();
    ASSERT_TRUE(host->serveAndMount());
    const json found = row("integrity", {"--full"});
    EXPECT_EQ(found["state"], "pass");
    EXPECT_EQ(found["detail"], "All 11 files were read.");
    EXPECT_NE(host->run({"check", "--full"}).output.find("All 11 files were read."), std::string::npos);
}

TEST_F(Integrity, exchangedStoreIsToldAndUsedOnlyWhenItIsMeant)
{
    makeDrive();
    std::filesystem::rename(host->paths().image, host->paths().home / "mine");
    host->makeSmallStore();
    EXPECT_FALSE(host->serveAndMount());
    EXPECT_NE(host->attachError().find("holds another volume"), std::string::npos) << host->attachError();
    EXPECT_EQ(row("store")["state"], "fail");

    std::filesystem::rename(host->paths().image, host->paths().home / "other");
    std::filesystem::rename(host->paths().home / "mine", host->paths().image);
    std::filesystem::remove(host->paths().unprepared);
    ASSERT_EQ(host->run({"restart"}).status, 0) << host->logText();
    EXPECT_EQ(fingerprint(drive()), files);
    EXPECT_TRUE(passes("store"));

    host->endServing(SIGTERM);
    std::filesystem::rename(host->paths().image, host->paths().home / "mine");
    std::filesystem::rename(host->paths().home / "other", host->paths().image);
    std::ofstream(host->paths().unprepared).put(' ');
    EXPECT_FALSE(host->serveAndMount());
    const ToolRun accepted = host->run({"check", "--acknowledge"});
    EXPECT_EQ(accepted.status, 0) << accepted.errorText << host->logText();
    EXPECT_TRUE(host->isMounted());
    EXPECT_TRUE(waitUntil([&] { return passes("store"); })) << row("store");
}

TEST_F(Integrity, olderStoreIsToldUntilItIsAcknowledged)
{
    makeDrive();
    const std::string image = host->paths().image.string();
    const std::string copy = (host->folder() / "copy").string();
    ASSERT_EQ(::system(("cp --sparse=always '" + image + "' " + copy).c_str()), 0);
    ASSERT_TRUE(host->serveAndMount());
    for (unsigned number = 0; number < 8; ++number) {
        testing::writeFile(drive() / "later", std::to_string(number));
        ASSERT_EQ(runProgram({"sync", "-f", drive().string()}), 0);
    }
    host->endServing(SIGTERM);
    EXPECT_TRUE(host->serveAndMount());
    EXPECT_TRUE(passes("store")) << "the newest one is right";
    host->endServing(SIGTERM);
    ASSERT_EQ(::system(("cp --sparse=always " + copy + " '" + image + "'").c_str()), 0);

    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    EXPECT_EQ(fingerprint(drive()), files);
    EXPECT_NE(row("store")["detail"].get<std::string>().find("older than the one"), std::string::npos);
    EXPECT_TRUE(waitUntil([&] { return passes("integrity"); }, std::chrono::seconds(60)));
    ASSERT_EQ(host->run({"restart"}).status, 0);
    EXPECT_FALSE(passes("store")) << "a restart is no acknowledgement";
    EXPECT_EQ(host->run({"check", "--acknowledge"}).status, 0);
    EXPECT_TRUE(waitUntil([&] { return passes("store"); })) << row("store");
    ASSERT_EQ(host->run({"restart"}).status, 0);
    EXPECT_TRUE(passes("store"));
}

TEST_F(Integrity, damagedFirstSuperblockIsMadeAgainFromItsCopyWhichIsNamed)
{
    makeDrive();
    {
        std::fstream image(host->paths().image, std::ios::in | std::ios::out | std::ios::binary);
        image.seekp(0x10000);
        const std::string garbage(4096, 'x');
        image.write(garbage.data(), static_cast<std::streamsize>(garbage.size()));
    }
    EXPECT_EQ(row("store")["detail"],
              "The first superblock of the drive's store is damaged; a copy of it is whole.");
    ASSERT_TRUE(host->serveAndMount()) << host->attachError() << host->logText();
    EXPECT_NE(host->logText().find("made again from the copy at 64 MiB"), std::string::npos)
        << host->logText();
    EXPECT_EQ(fingerprint(drive()), files);
    EXPECT_TRUE(waitUntil([&] { return passes("integrity"); }, std::chrono::seconds(60))) << row("integrity");
}

TEST_F(Integrity, damagedSuperblockWithDamagedStructuresIsLeftAsItIs)
{
    makeDrive();
    const std::string garbage(16384, 'x');
    {
        const std::string command = "btrfs inspect-internal dump-super '" + host->paths().image.string() +
                                    "' | awk '/^root[[:space:]]/{print $2}' > '" +
                                    (host->folder() / "root").string() + "'";
        ASSERT_EQ(::system(command.c_str()), 0);
        std::fstream image(host->paths().image, std::ios::in | std::ios::out | std::ios::binary);
        image.seekp(0x10000);
        image.write(garbage.data(), 4096);
        // Every stretch of the image that holds anything but the copy of the superblock.
        const FileDescriptor holes(::open(host->paths().image.c_str(), O_RDONLY | O_CLOEXEC));
        for (off_t data = ::lseek(holes.get(), 0x20000, SEEK_DATA); data >= 0;) {
            const off_t end = ::lseek(holes.get(), data, SEEK_HOLE);
            for (off_t at = data; at < end; at += 16384) {
                if (at + 16384 <= 0x4000000 || at >= 0x4010000) {
                    image.seekp(at);
                    image.write(garbage.data(), 16384);
                }
            }
            data = ::lseek(holes.get(), end, SEEK_DATA);
        }
    }
    EXPECT_FALSE(host->serveAndMount());
    EXPECT_NE(host->attachError().find("by the copy at 64 MiB"), std::string::npos) << host->attachError();
    std::ifstream image(host->paths().image, std::ios::binary);
    image.seekg(0x10000);
    EXPECT_EQ(image.get(), 'x') << "nothing was written over it";
}

TEST_F(Integrity, hostThatBecameReadOnlyIsToldInItsOwnWords)
{
    makeDrive();
    ASSERT_TRUE(host->serveAndMount());
    // As the host does it after an error of its disk.
    ASSERT_EQ(runProgram({"mount", "-o", "remount,abort", host->disk().mountPoint().string()}), 0);
    const std::string words = "This computer's own disk takes no changes";
    EXPECT_TRUE(waitUntil([&] { return row("drive").value("detail", "").find(words) != std::string::npos; }))
        << row("drive");
    // What the drive has not written yet makes it read-only as well.
    EXPECT_FALSE(writeRandomFile(drive() / "new", 2'000'000, 1));
    EXPECT_TRUE(waitUntil([&] { return host->attachError().find(words) != std::string::npos; },
                          std::chrono::seconds(60)))
        << host->status();
    host->endServing(SIGKILL);
    host->dropDrive();
}

TEST_F(Integrity, folderUsageIsOfTheDriveAsItIsNowAndOfItsFoldersOnly)
{
    host->makeSmallStore();
    ASSERT_TRUE(host->serveAndMount());
    testing::writeFile(drive() / "one/a", randomBytes(3'000'000, 5));
    const ToolRun first = host->run({"du"});
    EXPECT_EQ(first.status, 0) << first.errorText;
    EXPECT_NE(first.output.find("one                3 MB        3 MB     0 bytes\n"), std::string::npos)
        << first.output;
    const auto total = [&](const std::vector<std::string>& arguments) {
        return json::parse(host->run(arguments).output)["holds"].get<std::uint64_t>();
    };
    const std::uint64_t before = total({"du", "--json"});
    EXPECT_EQ(total({"du", "--json", (drive() / "one").string()}), before);
    std::filesystem::create_directories(drive() / "two");
    EXPECT_EQ(total({"du", "--json", (drive() / "two").string()}), 0U) << "made since the sums were kept";
    EXPECT_EQ(host->run({"du", host->paths().home.string()}).errorText,
              host->paths().home.string() + " is not on the drive.\n");
    EXPECT_EQ(host->run({"du", (drive() / "one/a").string()}).status, 1);
    EXPECT_EQ(host->run({"du", (drive() / "none").string()}).status, 1);
}

TEST_F(Integrity, sharingNowIsDoneWhenTheCommandEndsAndPauseOutlivesARestart)
{
    host->makeSmallStore();
    ASSERT_TRUE(host->serveAndMount());
    testing::writeFile(drive() / "a", plainBytes(3'000'000, 5));
    testing::writeFile(drive() / "b", plainBytes(3'000'000, 5));
    const ToolRun now = host->run({"share", "now"});
    EXPECT_EQ(now.status, 0) << now.errorText;
    EXPECT_TRUE(now.output.starts_with("Shared 3 MB of repeated data in ")) << now.output;
    EXPECT_TRUE(host->run({"share", "now"}).output.starts_with("Found nothing more to share"));
    EXPECT_EQ(host->run({"share", "pause"}).status, 0);
    EXPECT_TRUE(waitUntil([&] {
        return host->run({"status"}).output.find("ferrobank share resume") != std::string::npos;
    })) << host->run({"status"}).output;
    ASSERT_EQ(host->run({"restart"}).status, 0);
    EXPECT_NE(host->run({"status"}).output.find("ferrobank share resume"), std::string::npos);
    EXPECT_EQ(row("sharing")["detail"], "Paused. To go on, run: ferrobank share resume");
    EXPECT_EQ(host->run({"share", "resume"}).status, 0);
    EXPECT_TRUE(waitUntil([&] { return !row("sharing").contains("detail"); })) << row("sharing");
}

} // namespace
} // namespace ferrobank::drive::testing
