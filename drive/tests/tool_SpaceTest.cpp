#include "figures/DeviceCounters.h"
#include "platform/FileDescriptor.h"
#include "platform/Files.h"
#include "platform/ToolPrograms.h"
#include "store/Superblock.h"
#include "testing/DriveHost.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <thread>

namespace ferrobank::drive::testing {
namespace {

using nlohmann::json;

constexpr std::uint64_t kMiB = 1024 * 1024;
constexpr std::uint64_t kGiB = 1024 * kMiB;

struct Room {
    std::uint64_t total = 0;
    std::uint64_t free = 0;
};

Room roomOf(const std::filesystem::path& path)
{
    struct statvfs facts{};
    EXPECT_EQ(::statvfs(path.c_str(), &facts), 0);
    return {.total = static_cast<std::uint64_t>(facts.f_blocks) * facts.f_frsize,
            .free = static_cast<std::uint64_t>(facts.f_bavail) * facts.f_frsize};
}

double number(std::uint64_t bytes)
{
    return static_cast<double>(bytes);
}

/// A drive on a disk of 20 GiB, which is not really there.
class Space : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!volumesUnavailable().empty()) {
            GTEST_SKIP() << volumesUnavailable();
        }
        host = std::make_unique<DriveHost>("ext4", 20 * kGiB);
        ASSERT_TRUE(host->serveAndMount()) << host->logText();
    }

    [[nodiscard]] const std::filesystem::path& drive() const { return host->paths().drive; }

    [[nodiscard]] json status() const { return json::parse(host->status()); }

    [[nodiscard]] std::uint64_t saved() const { return status().value("saved", std::uint64_t{0}); }

    [[nodiscard]] json state() const
    {
        return json::parse(readSmallFile(host->paths().state()).value_or("{}"), nullptr, false);
    }

    [[nodiscard]] std::uint64_t reserve() const
    {
        return state()["space"].value("reserve", std::uint64_t{0});
    }

    /// Whether the drive offers what the computer has beyond its reserve.
    [[nodiscard]] bool isGuarded() const
    {
        const std::uint64_t usable = roomOf(host->paths().home).free - reserve();
        const std::uint64_t offered = roomOf(drive()).free;
        return reserve() > 0 && offered < usable + 400 * kMiB && offered + 800 * kMiB > usable;
    }

    /// What is open in the serving process, as /proc tells it, of the guard.
    [[nodiscard]] std::string guard() const
    {
        const std::filesystem::path open = "/proc/" + std::to_string(host->servingProcess()) + "/fd";
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(open, error)) {
            const std::string target = std::filesystem::read_symlink(entry.path(), error).string();
            struct stat status{};
            if (target.find("/.ferrobank/space/") != std::string::npos &&
                ::stat(entry.path().c_str(), &status) == 0)
            {
                return target + " " + std::to_string(status.st_ino);
            }
        }
        return {};
    }

    void fillHost(std::uint64_t bytes) const
    {
        const FileDescriptor filler(
            ::open((host->disk().mountPoint() / "filler").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        ASSERT_EQ(::ftruncate(filler.get(), 0), 0);
        ASSERT_TRUE(bytes == 0 || ::fallocate(filler.get(), 0, 0, static_cast<off_t>(bytes)) == 0);
    }

    [[nodiscard]] int runShell(const std::string& command) const
    {
        return runProgram({"/bin/sh", "-c", "cd '" + drive().string() + "' && " + command});
    }

    std::string textOf(const std::string& command) const
    {
        const std::filesystem::path file = host->folder() / "text";
        EXPECT_EQ(runShell("( " + command + " ) >'" + file.string() + "' 2>&1"), 0)
            << readSmallFile(file).value_or("");
        return readSmallFile(file).value_or(std::string());
    }

    std::unique_ptr<DriveHost> host;
};

TEST_F(Space, driveIsAsLargeAsItsDiskAndOffersWhatThatHasWithinThreeSeconds)
{
    EXPECT_TRUE(waitUntil([&] { return isGuarded(); }, std::chrono::seconds(3)))
        << roomOf(drive()).free << " free on the drive, " << roomOf(host->paths().home).free
        << " on the computer";
    EXPECT_NEAR(number(roomOf(drive()).total), number(roomOf(host->paths().home).total), 1.5 * number(kGiB));
}

TEST_F(Space, toolsThatReadTheDriveMeetOnlyTheFilesOfTheUser)
{
    ASSERT_TRUE(writeRandomFile(drive() / "document", 5 * kMiB, 1));
    std::filesystem::create_directory(drive() / "folder");
    ASSERT_TRUE(writeRandomFile(drive() / "folder/other", 3 * kMiB, 2));
    ASSERT_TRUE(waitUntil([&] { return isGuarded(); }));

    EXPECT_LT(std::stoull(textOf("du -s -B1 . | cut -f1")), 9 * kMiB);
    EXPECT_LT(std::stoull(textOf("du -s --apparent-size -B1 . | cut -f1")), 9 * kMiB);
    EXPECT_LT(std::stoull(textOf("tar -cf - . | wc -c")), 9 * kMiB);
    const std::string copy = (host->folder() / "copy").string();
    if (runShell("command -v rsync >/dev/null") == 0) {
        textOf("rsync -a --exclude=/.ferrobank ./ '" + copy + "/'");
        EXPECT_EQ(fingerprint(copy), fingerprint(drive()));
        textOf("rsync -a ./ '" + copy + "/'");
        EXPECT_EQ(fingerprint(copy), fingerprint(drive()));
        EXPECT_LT(std::stoull(textOf("du -s -B1 '" + copy + "' | cut -f1")), 9 * kMiB);
    }
    if (runShell("command -v borg >/dev/null") == 0) {
        const std::string borg =
            "BORG_BASE_DIR='" + copy + "-borg' BORG_UNKNOWN_UNENCRYPTED_REPO_ACCESS_IS_OK=yes borg ";
        textOf(borg + "init -e none '" + copy + "-repository'");
        textOf(borg + "create '" + copy + "-repository::one' .");
        const json facts =
            json::parse(textOf(borg + "info --json '" + copy + "-repository::one'"), nullptr, false);
        ASSERT_TRUE(facts.is_object());
        EXPECT_LT(facts["archives"][0]["stats"]["original_size"].get<std::uint64_t>(), 9 * kMiB);
        EXPECT_EQ(facts["archives"][0]["stats"]["nfiles"].get<int>(), 2);
    }
}

TEST_F(Space, takeoverKeepsTheGuardAtEveryMoment)
{
    ASSERT_TRUE(waitUntil([&] { return isGuarded(); }));
    const std::string before = guard();
    ASSERT_FALSE(before.empty());
    std::uint64_t most = 0;
    std::jthread watch([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            most = std::max(most, roomOf(drive()).free);
        }
    });
    EXPECT_EQ(host->run({"restart", "--keep-mounted"}).status, 0);
    EXPECT_TRUE(waitUntil([&] { return guard() == before; })) << guard() << " instead of " << before;
    watch = {};
    EXPECT_LT(most, roomOf(host->paths().home).free);
}

TEST_F(Space, guardIsThereAgainAfterAKill)
{
    ASSERT_TRUE(waitUntil([&] { return isGuarded(); }));
    host->endServing(SIGKILL);
    ASSERT_TRUE(host->serveAndMount());
    EXPECT_TRUE(waitUntil([&] { return isGuarded() && !guard().empty(); }));
    EXPECT_EQ(host->run({"restart"}).status, 0) << "the guard keeps the drive from being unmounted";
    EXPECT_TRUE(waitUntil([&] { return isGuarded(); }));
}

TEST_F(Space, driveGrowsWithItsDiskWhenItIsMountedAnew)
{
    ASSERT_TRUE(writeRandomFile(drive() / "document", 5 * kMiB, 1));
    const auto files = fingerprint(drive());
    host->endServing(SIGTERM);
    ASSERT_FALSE(host->isMounted());
    host->disk().unmount();
    std::filesystem::resize_file(host->disk().image(), 40 * kGiB);
    ASSERT_EQ(runProgram({"/bin/sh", "-c",
                          "e2fsck -fp '" + host->disk().image().string() + "' >/dev/null; resize2fs '" +
                              host->disk().image().string() + "' >/dev/null 2>&1"}),
              0);
    host->disk().mount("");
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    EXPECT_NEAR(number(roomOf(drive()).total), number(roomOf(host->paths().home).total), 1.5 * number(kGiB));
    EXPECT_EQ(fingerprint(drive()), files);
    EXPECT_TRUE(waitUntil([&] { return isGuarded(); }));
}

TEST_F(Space, driveOfTheFirstFormIsServedAsItIs)
{
    host->endServing(SIGTERM);
    std::filesystem::remove_all(host->paths().store);
    host->makeSmallStore();
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    EXPECT_EQ(roomOf(drive()).total, 64 * kGiB);
    std::filesystem::create_directories(drive() / ".ferrobank");
    EXPECT_TRUE(waitUntil([&] { return isGuarded(); }));
}

TEST_F(Space, cloneIsToldAsSavedAndFreshDataNever)
{
    ASSERT_TRUE(waitUntil([&] { return isGuarded(); }));
    ASSERT_TRUE(writeRandomFile(drive() / "one", 300 * kMiB, 1));
    std::uint64_t most = 0;
    // Until the figures know of the file, and with the data on its way all the time.
    EXPECT_TRUE(waitUntil(
        [&] {
            most = std::max(most, saved());
            return status().value("volume_used", std::uint64_t{0}) >= 300 * kMiB;
        },
        std::chrono::seconds(90)));
    EXPECT_LT(most, 3 * kMiB);

    ASSERT_EQ(runShell("cp --reflink=always one two"), 0);
    EXPECT_TRUE(waitUntil([&] { return saved() > 297 * kMiB; }, std::chrono::seconds(90))) << host->status();
    EXPECT_NEAR(number(saved()), 300.0 * kMiB, 3.0 * kMiB);
    EXPECT_NEAR(number(status()["store_bytes"].get<std::uint64_t>()), 300.0 * kMiB, 12.0 * kMiB);

    // What is deleted is not saved: neither before nor after the figures know.
    ASSERT_TRUE(writeRandomFile(drive() / "three", 300 * kMiB, 2));
    ASSERT_EQ(runShell("sync -f . && rm three && sync -f ."), 0);
    most = 0;
    const json first = state();
    EXPECT_TRUE(waitUntil(
        [&] {
            most = std::max(most, saved());
            return state()["walk_generation"] != first["walk_generation"] && saved() > 297 * kMiB;
        },
        std::chrono::seconds(90)));
    EXPECT_LT(most, 303 * kMiB);
}

TEST_F(Space, roomThatComesAndGoesOnTheComputerMovesNoFigureAndIsNoChange)
{
    ASSERT_TRUE(waitUntil([&] { return isGuarded(); }));
    ASSERT_TRUE(writeRandomFile(drive() / "one", 100 * kMiB, 1));
    ASSERT_EQ(runShell("cp --reflink=always one two && sync -f ."), 0);
    ASSERT_TRUE(waitUntil([&] { return saved() > 99 * kMiB; }, std::chrono::seconds(90))) << host->status();
    const std::string uuid = state()["uuid"];
    const auto committed = [&] {
        const FileDescriptor root(::open(drive().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        return filesGeneration(root.get(), uuid).value_or(0);
    };
    ASSERT_TRUE(
        waitUntil([&] { return state()["walk_generation"] == committed(); }, std::chrono::seconds(90)));
    const json before = state();
    std::uint64_t lowest = saved();
    std::uint64_t highest = lowest;
    for (const std::uint64_t gibibytes : {8U, 0U, 11U, 3U, 9U}) {
        const std::uint64_t generation = volumeGeneration(uuid).value_or(0);
        const json guard = state()["space"]["guard"];
        fillHost(gibibytes * kGiB);
        EXPECT_TRUE(waitUntil(
            [&] {
                const std::uint64_t now = saved();
                lowest = std::min(lowest, now);
                highest = std::max(highest, now);
                return isGuarded() && state()["space"]["guard"] != guard &&
                       volumeGeneration(uuid).value_or(0) != generation;
            },
            std::chrono::seconds(60)));
    }
    EXPECT_GT(lowest, 99 * kMiB);
    EXPECT_LT(highest, 101 * kMiB);
    EXPECT_EQ(committed(), before["walk_generation"].get<std::uint64_t>())
        << "the guard was taken for a change";
    EXPECT_EQ(state()["walk_generation"], before["walk_generation"]);
}

} // namespace
} // namespace ferrobank::drive::testing
