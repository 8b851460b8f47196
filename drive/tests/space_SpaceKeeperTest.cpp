#include "figures/DeviceCounters.h"
#include "space/SpaceKeeper.h"
#include "testing/DriveHost.h"
#include "testing/ScanVolume.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/statvfs.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace ferrobank::drive::testing {
namespace {

std::uint64_t freeBytes(const std::filesystem::path& path)
{
    struct statvfs facts{};
    ::statvfs(path.c_str(), &facts);
    return static_cast<std::uint64_t>(facts.f_bavail) * facts.f_frsize;
}

/// A large drive on a small computer.
class SpaceKeeperTest : public ScanVolume {
protected:
    void SetUp() override
    {
        ScanVolume::SetUp();
        if (IsSkipped()) {
            return;
        }
        drive.emplace(root().parent_path(), "large", "btrfs", 8192 * kMiB, "noatime,discard=sync");
        host.emplace(root().parent_path(), "host", "ext4", 4096 * kMiB);
        // So little that the keeper looks every second.
        const FileDescriptor filler(
            ::open((host->mountPoint() / "filler").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        const std::uint64_t free = freeBytes(host->mountPoint());
        ASSERT_EQ(::fallocate(filler.get(), 0, 0, static_cast<off_t>(free - 1200 * kMiB)), 0);
        const FileDescriptor folder(::open(drive->mountPoint().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        uuid = volumeState(folder.get())->uuid;
    }

    /// The guard's size in the first `count` reports of a keeper, which takes the guard over from the one
    /// before.
    std::vector<std::uint64_t> guardSizes(std::size_t count)
    {
        std::mutex mutex;
        std::condition_variable changed;
        std::vector<std::uint64_t> sizes;
        const auto looked = [&](const SpaceState& state) {
            const std::lock_guard lock(mutex);
            sizes.push_back(state.guard);
            changed.notify_one();
        };
        SpaceKeeper keeper(drive->mountPoint(), uuid, host->mountPoint() / "reserve",
                           Log(root().parent_path() / "log"), {.looked = looked}, std::move(guard));
        {
            std::unique_lock lock(mutex);
            EXPECT_TRUE(
                changed.wait_for(lock, std::chrono::seconds(60), [&] { return sizes.size() >= count; }));
        }
        guard = keeper.takeGuard();
        return sizes;
    }

    std::optional<TestVolume> drive;
    std::optional<TestVolume> host;
    std::string uuid;
    FileDescriptor guard;
};

TEST_F(SpaceKeeperTest, newGuardHasItsSizeAtOnceAndKeepsItAtTheNextLooks)
{
    writeFile(host->mountPoint() / "reserve", "there already");
    const std::uint64_t offered = freeBytes(drive->mountPoint());
    const std::vector<std::uint64_t> sizes = guardSizes(5);
    ASSERT_GE(sizes.size(), 5U);
    EXPECT_EQ(sizes[0], 0U);
    const SpaceFigures computer = hostFigures(host->mountPoint());
    const std::uint64_t target = offered - (computer.hostFree - reserveFor(computer));
    for (std::size_t number = 1; number < sizes.size(); ++number) {
        EXPECT_NEAR(static_cast<double>(sizes[number]), static_cast<double>(target), 50.0 * kMiB) << number;
    }
}

TEST_F(SpaceKeeperTest, guardThatGaveWayIsNotTakenForLessThanItIs)
{
    const std::uint64_t before = guardSizes(3).back();
    std::filesystem::resize_file(host->mountPoint() / "filler", 0);
    const std::uint64_t usable = freeBytes(host->mountPoint()) - reserveFor(hostFigures(host->mountPoint()));
    const std::uint64_t free = freeBytes(drive->mountPoint());
    const std::vector<std::uint64_t> sizes = guardSizes(3);
    ASSERT_GE(sizes.size(), 3U);
    EXPECT_NEAR(static_cast<double>(sizes[1]), static_cast<double>(free + before - usable), 300.0 * kMiB);
    EXPECT_EQ(sizes[2], sizes[1]);
}

TEST_F(SpaceKeeperTest, reserveThatCannotBeMadeKeepsTheGuardFromNothing)
{
    // Room enough for the reserve to be wanted, and something in the place where it is made.
    std::filesystem::create_directories(host->mountPoint() / "reserve.new/full");
    const std::uint64_t offered = freeBytes(drive->mountPoint());
    const std::vector<std::uint64_t> sizes = guardSizes(5);
    const SpaceFigures computer = hostFigures(host->mountPoint());
    EXPECT_EQ(hostReserveAct(computer.hostFree, computer.hostTotal, false), HostReserveAct::Make);
    const std::uint64_t target = offered - (computer.hostFree - reserveFor(computer));
    EXPECT_NEAR(static_cast<double>(sizes.back()), static_cast<double>(target), 50.0 * kMiB);
}

TEST_F(SpaceKeeperTest, reserveThatCannotBeFinishedLeavesNothingAndIsNotTriedAtEveryLook)
{
    // A drive that needs no guard: the limit that keeps the reserve from being written would stop that, too.
    const FileDescriptor folder(::open(root().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::string small = volumeState(folder.get())->uuid;
    const FileDescriptor watch(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    ASSERT_GE(::inotify_add_watch(watch.get(), host->mountPoint().c_str(), IN_CREATE), 0);
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit low{.rlim_cur = 10 * kMiB, .rlim_max = before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &low);
    std::atomic<int> looks = 0;
    {
        const SpaceKeeper keeper(root(), small, host->mountPoint() / "reserve",
                                 Log(root().parent_path() / "log"),
                                 {.looked = [&](const SpaceState&) { ++looks; }});
        EXPECT_TRUE(waitUntil([&] { return looks >= 4; }));
    }
    ::setrlimit(RLIMIT_FSIZE, &before);
    alignas(inotify_event) std::array<char, 4096> events{};
    const ssize_t got = ::read(watch.get(), events.data(), events.size());
    ASSERT_GT(got, 0);
    const auto* first = reinterpret_cast<const inotify_event*>(events.data());
    EXPECT_STREQ(first->name, "reserve.new");
    EXPECT_EQ(got, static_cast<ssize_t>(sizeof *first + first->len)) << "it was made more than once";
    EXPECT_FALSE(std::filesystem::exists(host->mountPoint() / "reserve.new"));
    EXPECT_FALSE(std::filesystem::exists(host->mountPoint() / "reserve"));
}

} // namespace
} // namespace ferrobank::drive::testing
