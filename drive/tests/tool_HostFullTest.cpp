#include "platform/FileDescriptor.h"
#include "platform/Files.h"
#include "testing/DriveHost.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <nlohmann/json.hpp>

namespace ferrobank::drive::testing {
namespace {

constexpr std::uint64_t kMiB = 1024 * 1024;
constexpr std::uint64_t kHostBytes = 3072 * kMiB;

std::uint64_t freeBytes(const std::filesystem::path& path)
{
    struct statvfs facts{};
    ::statvfs(path.c_str(), &facts);
    return static_cast<std::uint64_t>(facts.f_bavail) * facts.f_frsize;
}

class HostFull : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!volumesUnavailable().empty()) {
            GTEST_SKIP() << volumesUnavailable();
        }
        host = std::make_unique<DriveHost>("ext4", kHostBytes);
        host->makeSmallStore();
        ASSERT_TRUE(host->serveAndMount()) << host->logText();
        ASSERT_TRUE(guardHasSettled()) << "the guard did not reach its size";
    }

    [[nodiscard]] bool guardHasSettled() const
    {
        return waitUntil(
            [this] {
                const std::uint64_t onDrive = freeBytes(host->paths().drive);
                const std::uint64_t onHost = freeBytes(host->paths().home);
                return onDrive < onHost && onDrive > onHost / 2;
            },
            std::chrono::seconds(180));
    }

    /// Leaves `left` bytes free on the host.
    void fillHost(std::uint64_t left) const
    {
        const std::uint64_t free = freeBytes(host->paths().home);
        ASSERT_GT(free, left);
        const FileDescriptor filler(
            ::open(fillerPath().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
        ASSERT_EQ(
            ::fallocate(filler.get(), 0, ::lseek(filler.get(), 0, SEEK_END), static_cast<off_t>(free - left)),
            0);
    }

    [[nodiscard]] std::filesystem::path fillerPath() const { return host->disk().mountPoint() / "filler"; }

    [[nodiscard]] bool isWritable() const
    {
        const auto root = nlohmann::json::parse(host->status());
        return root["mounted"] == true;
    }

    std::unique_ptr<DriveHost> host;
};

TEST_F(HostFull, programGetsNoSpaceLeftAndEverySyncedFileIsWhole)
{
    const std::filesystem::path& drive = host->paths().drive;
    int error = 0;
    unsigned number = 0;
    for (; number < 60; ++number) {
        errno = 0;
        if (!writeRandomFile(drive / std::to_string(number), 100 * kMiB, number)) {
            error = errno;
            break;
        }
    }
    ASSERT_LT(number, 60U) << "the host took more than it has";
    ASSERT_GT(number, 3U) << freeBytes(drive) << " bytes free on the drive, " << freeBytes(host->paths().home)
                          << " on the host; " << readSmallFile(host->paths().state()).value_or("no state");
    EXPECT_EQ(error, ENOSPC);
    EXPECT_TRUE(isWritable());
    EXPECT_GT(freeBytes(host->paths().home), 64 * kMiB) << "the host was filled to the brim";

    std::filesystem::remove(drive / std::to_string(number));
    const auto files = fingerprint(drive);
    EXPECT_EQ(files.size(), number);
    host->endServing(SIGTERM);
    ASSERT_FALSE(host->isMounted());
    ASSERT_TRUE(host->serveAndMount());
    EXPECT_EQ(fingerprint(drive), files);

    const std::uint64_t before = freeBytes(host->paths().home);
    for (unsigned each = 0; each < number; ++each) {
        std::filesystem::remove(drive / std::to_string(each));
    }
    EXPECT_TRUE(waitUntil([&] { return freeBytes(host->paths().home) > before + number * 90 * kMiB; },
                          std::chrono::seconds(60)))
        << "deleting files gave the host nothing back";
}

TEST_F(HostFull, hostFilledByOthersStopsTheDriveFromTakingFilesUntilThereIsRoom)
{
    const std::filesystem::path& drive = host->paths().drive;
    ASSERT_TRUE(writeRandomFile(drive / "kept", 5 * kMiB, 1));
    const auto files = fingerprint(drive);
    fillHost(200 * kMiB);
    ASSERT_TRUE(waitUntil([&] { return freeBytes(drive) < 64 * kMiB; }, std::chrono::seconds(60)));
    errno = 0;
    EXPECT_FALSE(writeRandomFile(drive / "large", 300 * kMiB, 2));
    EXPECT_EQ(errno, ENOSPC);
    std::filesystem::remove(drive / "large");
    EXPECT_TRUE(isWritable());
    EXPECT_TRUE(waitUntil([&] {
        return host->run({"check", "--json"}).output.find(R"("action":"storage-settings")") !=
               std::string::npos;
    }));
    EXPECT_EQ(fingerprint(drive), files);

    std::filesystem::remove(fillerPath());
    EXPECT_TRUE(waitUntil([&] { return freeBytes(drive) > 500 * kMiB; }, std::chrono::seconds(60)));
    EXPECT_TRUE(writeRandomFile(drive / "large", 300 * kMiB, 2));
}

TEST_F(HostFull, fullHostMakesTheReserveGiveWayAndTheDriveStaysUsable)
{
    const std::filesystem::path& drive = host->paths().drive;
    ASSERT_TRUE(writeRandomFile(drive / "kept", 5 * kMiB, 1));
    ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(host->paths().reserve); }));
    fillHost(10 * kMiB);
    EXPECT_TRUE(waitUntil([&] { return !std::filesystem::exists(host->paths().reserve); }));
    EXPECT_TRUE(isWritable());
    std::filesystem::remove(drive / "kept");
    EXPECT_TRUE(isWritable());
    std::filesystem::remove(fillerPath());
    EXPECT_TRUE(
        waitUntil([&] { return std::filesystem::exists(host->paths().reserve); }, std::chrono::seconds(60)));
    EXPECT_TRUE(writeRandomFile(drive / "again", 5 * kMiB, 2));
}

TEST_F(HostFull, metadataCanGrowWhileTheDriveLooksFull)
{
    const std::filesystem::path& drive = host->paths().drive;
    fillHost(400 * kMiB);
    ASSERT_TRUE(waitUntil([&] { return freeBytes(drive) < 200 * kMiB; }, std::chrono::seconds(60)));
    for (int number = 0; number < 20'000; ++number) {
        const FileDescriptor file(
            ::open((drive / std::to_string(number)).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        ASSERT_TRUE(file) << "after " << number << " files";
    }
    EXPECT_TRUE(isWritable());
}

} // namespace
} // namespace ferrobank::drive::testing
