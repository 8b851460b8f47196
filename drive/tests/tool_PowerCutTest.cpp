#include "mounting/LoopDevices.h"
#include "platform/FileDescriptor.h"
#include "platform/Files.h"
#include "testing/DriveHost.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/loop.h>
#include <linux/types.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <map>
#include <mutex>
#include <thread>

namespace ferrobank::drive::testing {
namespace {

// The request that ext4 and XFS share: stop the file system at once, as a power cut does, without writing its
// log.
constexpr unsigned long kShutdown = _IOR('X', 125, __u32);
constexpr __u32 kWithoutLog = 2;
constexpr int kRuns = 5;

/// Writes and syncs files until the disk is gone; knows which ones must survive.
class Writer {
public:
    explicit Writer(std::filesystem::path folder, unsigned seed)
        : _folder(std::move(folder)), _thread([this, seed] { run(seed); })
    {}

    ~Writer() { _thread.join(); }

    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    [[nodiscard]] std::size_t count() const
    {
        const std::lock_guard lock(_mutex);
        return _synced.size();
    }

    [[nodiscard]] std::vector<std::string> synced() const
    {
        const std::lock_guard lock(_mutex);
        return _synced;
    }

private:
    void run(unsigned seed)
    {
        for (unsigned number = 0; number < 100'000; ++number) {
            const std::string name = std::to_string(seed) + "-" + std::to_string(number);
            if (!writeRandomFile(_folder / name, 4096 + number % 7 * 30'000, seed * 1000 + number)) {
                return;
            }
            const std::lock_guard lock(_mutex);
            _synced.push_back(name);
        }
    }

    std::filesystem::path _folder;
    mutable std::mutex _mutex;
    std::vector<std::string> _synced;
    std::thread _thread;
};

class PowerCut : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        if (!volumesUnavailable().empty()) {
            GTEST_SKIP() << volumesUnavailable();
        }
        host = std::make_unique<DriveHost>(GetParam());
        host->makeSmallStore();
    }

    void cutPower() const
    {
        const FileDescriptor disk(
            ::open(host->disk().mountPoint().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        __u32 how = kWithoutLog;
        if (::ioctl(disk.get(), kShutdown, &how) == 0) {
            return;
        }
        // A file system without that request loses its device instead: from now on nothing is written.
        const std::vector<LoopDevice> loops = loopsOf(host->disk().image(), Recognise::ByFile);
        ASSERT_EQ(loops.size(), 1U);
        const FileDescriptor device(::open(loops[0].device.c_str(), O_RDWR | O_CLOEXEC));
        loop_info64 info{};
        ASSERT_EQ(::ioctl(device.get(), LOOP_GET_STATUS64, &info), 0);
        info.lo_sizelimit = 4096;
        ASSERT_EQ(::ioctl(device.get(), LOOP_SET_STATUS64, &info), 0);
    }

    /// After the cut: the computer starts again with what its disk has.
    void startAgain() const
    {
        host->endServing(SIGKILL);
        host->dropDrive();
        host->disk().unmount();
        host->disk().mount();
    }

    void requireWhole(const std::map<std::string, std::string>& expected, const std::string& when) const
    {
        const auto found = fingerprint(host->paths().drive);
        for (const auto& [name, hash] : expected) {
            const auto file = found.find(name);
            ASSERT_NE(file, found.end()) << name << " is gone, " << when;
            ASSERT_EQ(file->second, hash) << name << " is not whole, " << when;
        }
    }

    std::unique_ptr<DriveHost> host;
};

TEST_P(PowerCut, everySyncedFileIsThereAfterwardsAndTheStructuresAreSound)
{
    std::map<std::string, std::string> expected;
    for (unsigned run = 1; run <= kRuns; ++run) {
        ASSERT_TRUE(host->serveAndMount()) << "run " << run << ": " << host->logText();
        requireWhole(expected, "run " + std::to_string(run));
        std::vector<std::string> synced;
        {
            Writer writer(host->paths().drive, run);
            ASSERT_TRUE(waitUntil([&] { return writer.count() > 40 + 10 * run; }, std::chrono::seconds(60)));
            synced = writer.synced();
            for (const std::string& name : synced) {
                expected[name] = {};
            }
            const auto now = fingerprint(host->paths().drive);
            for (const std::string& name : synced) {
                expected[name] = now.at(name);
            }
            // Half-made data and deletions are under way when the power goes.
            std::filesystem::remove(host->paths().drive / synced.front());
            expected.erase(synced.front());
            cutPower();
        }
        startAgain();
    }
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    requireWhole(expected, "at the end");
    EXPECT_NE(host->logText().find("are sound"), std::string::npos) << "no check after an unclean stop";
    EXPECT_EQ(host->logText().find("are damaged"), std::string::npos);
    EXPECT_GT(expected.size(), 200U);
}

TEST_P(PowerCut, duringASharingPassLosesNoSyncedFile)
{
    std::map<std::string, std::string> expected;
    const std::filesystem::path drive = host->paths().drive;
    unsigned cutAtWork = 0;
    for (unsigned run = 1; run <= kRuns; ++run) {
        ASSERT_TRUE(host->serveAndMount()) << "run " << run << ": " << host->logText();
        requireWhole(expected, "run " + std::to_string(run));
        for (unsigned number = 0; number < 60; ++number) {
            const unsigned seed = run * 1000 + number;
            for (const char* copy : {"a", "b", "c"}) {
                ASSERT_TRUE(
                    writeRandomFile(drive / (copy + std::to_string(seed)), 4096 + number * 9000, seed));
            }
        }
        expected = fingerprint(drive);
        {
            Writer writer(drive, run);
            const std::jthread sharing([this] { host->run({"share", "now"}, "sharing-errors"); });
            const auto isSharing = [this] {
                return readSmallFile(host->paths().state()).value_or(std::string()).find(R"("running":{)") !=
                       std::string::npos;
            };
            cutAtWork += waitUntil(isSharing, std::chrono::seconds(10)) ? 1U : 0U;
            // Each run somewhat further into the pass.
            const std::size_t written = writer.count();
            waitUntil([&] { return writer.count() >= written + run * 3; }, std::chrono::seconds(10));
            const std::vector<std::string> synced = writer.synced();
            const auto now = fingerprint(drive);
            for (const std::string& name : synced) {
                expected[name] = now.at(name);
            }
            cutPower();
            host->endServing(SIGKILL);
        }
        startAgain();
    }
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    requireWhole(expected, "at the end");
    EXPECT_EQ(host->logText().find("are damaged"), std::string::npos);
    EXPECT_GT(cutAtWork, 0U);
    const ToolRun full = host->run({"check", "--full"});
    EXPECT_NE(full.output.find("files were read."), std::string::npos) << full.output;
    EXPECT_EQ(host->run({"share", "now"}).status, 0);
    requireWhole(expected, "after a pass");
}

INSTANTIATE_TEST_SUITE_P(Hosts, PowerCut, ::testing::Values("ext4", "xfs", "btrfs"));

} // namespace
} // namespace ferrobank::drive::testing
