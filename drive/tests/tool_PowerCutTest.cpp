#include "platform/FileDescriptor.h"
#include "testing/DriveHost.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/types.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
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
        ASSERT_EQ(::ioctl(disk.get(), kShutdown, &how), 0);
    }

    std::unique_ptr<DriveHost> host;
};

TEST_P(PowerCut, everySyncedFileIsThereAfterwardsAndTheStructuresAreSound)
{
    std::map<std::string, std::string> expected;
    for (unsigned run = 1; run <= kRuns; ++run) {
        ASSERT_TRUE(host->serveAndMount()) << "run " << run << ": " << host->logText();
        const auto found = fingerprint(host->paths().drive);
        for (const auto& [name, hash] : expected) {
            const auto file = found.find(name);
            ASSERT_NE(file, found.end()) << name << " is gone, run " << run;
            ASSERT_EQ(file->second, hash) << name << " is not whole, run " << run;
        }
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
        host->endServing(SIGKILL);
        host->dropDrive();
        host->disk().unmount();
        host->disk().mount();
    }
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    EXPECT_NE(host->logText().find("are sound"), std::string::npos) << "no check after an unclean stop";
    EXPECT_EQ(host->logText().find("are damaged"), std::string::npos);
    EXPECT_GT(expected.size(), 200U);
}

INSTANTIATE_TEST_SUITE_P(Hosts, PowerCut, ::testing::Values("ext4", "xfs"));

} // namespace
} // namespace ferrobank::drive::testing
