#include "sharing/SharedRange.h"
#include "testing/ScanVolume.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <random>
#include <thread>
#include <utility>

namespace ferrobank::drive {

namespace {

namespace fs = std::filesystem;
using testing::contents;
using testing::inventory;
using testing::kMiB;
using testing::randomBytes;
using testing::readFile;
using testing::runProgram;
using testing::writeFile;

using Faults = testing::ScanVolume;

TEST_F(Faults, fileReplacedBetweenHashAndSharingKeepsItsNewContent)
{
    writeFile(root() / "a", randomBytes(kMiB, 1));
    writeFile(root() / "b", randomBytes(kMiB, 1));
    ScanSettings disturbed = settings();
    bool replaced = false;
    disturbed.onStep = [&](ScanStep step, const std::string& file) {
        if (step == ScanStep::Share && !replaced) {
            replaced = true;
            writeFile(root() / file, randomBytes(kMiB, 2));
        }
    };
    const SharingResult result = shareRepeatedData(disturbed, {});
    EXPECT_TRUE(result.complete()) << result.error;
    EXPECT_TRUE(replaced);
    EXPECT_EQ(result.bytesShared, 0U);
    EXPECT_FALSE(shares("a", "b"));
    EXPECT_NE(readFile(root() / "a"), readFile(root() / "b"));
    ASSERT_TRUE(scan().complete());
    EXPECT_FALSE(shares("a", "b"));
}

TEST_F(Faults, fileChangedInPlaceUnderTheHashIsNotBelieved)
{
    writeFile(root() / "a", randomBytes(4 * kMiB, 1));
    writeFile(root() / "b", randomBytes(4 * kMiB, 1));
    ScanSettings disturbed = settings();
    disturbed.onStep = [&](ScanStep step, const std::string& file) {
        if (step == ScanStep::Hash && file == "b") {
            const int open = ::open((root() / file).c_str(), O_WRONLY | O_CLOEXEC);
            EXPECT_EQ(::pwrite(open, "changed", 7, 3 * kMiB), 7);
            ::close(open);
        }
    };
    EXPECT_EQ(shareRepeatedData(disturbed, {}).filesShared, 0U);
    std::string expected = randomBytes(4 * kMiB, 1);
    expected.replace(3 * kMiB, 7, "changed");
    EXPECT_EQ(readFile(root() / "b"), expected);
    EXPECT_EQ(readFile(root() / "a"), randomBytes(4 * kMiB, 1));
}

TEST_F(Faults, fileThatVanishesOrBecomesALinkIsPassedOver)
{
    for (const char* name : {"a", "b", "c", "d"}) {
        writeFile(root() / name, randomBytes(kMiB, 1));
    }
    ScanSettings disturbed = settings();
    bool once = false;
    disturbed.onStep = [&](ScanStep, const std::string&) {
        if (!std::exchange(once, true)) {
            fs::remove(root() / "b");
            fs::remove(root() / "c");
            fs::create_symlink("/etc/passwd", root() / "c");
        }
    };
    const SharingResult result = shareRepeatedData(disturbed, {});
    EXPECT_TRUE(result.complete()) << result.error;
    EXPECT_EQ(result.filesShared, 1U);
    EXPECT_TRUE(shares("a", "d"));
}

TEST_F(Faults, twoWritersDuringPassesLoseNothing)
{
    constexpr int kFiles = 24;
    const std::string base = randomBytes(2 * kMiB, 1);
    for (int number = 0; number < kFiles; ++number) {
        writeFile(root() / std::to_string(number), base);
    }
    std::atomic<bool> done = false;
    std::vector<std::string> expected(kFiles, base);
    const auto write = [&](int first) {
        std::mt19937 generator(static_cast<unsigned>(first));
        while (!done) {
            const auto number = static_cast<int>(generator() % (kFiles / 2)) * 2 + first;
            const std::size_t offset = generator() % (base.size() - 8);
            const std::string word = std::to_string(generator() % 10'000'000 + 10'000'000);
            const int file = ::open((root() / std::to_string(number)).c_str(), O_WRONLY | O_CLOEXEC);
            EXPECT_EQ(::pwrite(file, word.data(), word.size(), static_cast<off_t>(offset)), 8);
            ::close(file);
            expected[static_cast<std::size_t>(number)].replace(offset, 8, word);
        }
    };
    std::thread even(write, 0);
    std::thread odd(write, 1);
    std::uint64_t shared = 0;
    for (int pass = 0; pass < 5; ++pass) {
        fs::remove_all(index());
        const SharingResult result = scan();
        EXPECT_TRUE(result.complete()) << result.error;
        shared += result.bytesShared;
    }
    done = true;
    even.join();
    odd.join();
    EXPECT_GT(shared, 0U);
    volume().unmount();
    volume().mount();
    for (int number = 0; number < kFiles; ++number) {
        EXPECT_EQ(readFile(root() / std::to_string(number)), expected[static_cast<std::size_t>(number)])
            << number;
    }
}

TEST_F(Faults, readOnlyDriveEndsThePassWithAReason)
{
    writeFile(root() / "a", randomBytes(kMiB, 1));
    writeFile(root() / "b", randomBytes(kMiB, 1));
    volume().remount("ro");
    const SharingResult result = scan();
    EXPECT_EQ(result.error, "Repeated data cannot be shared: Read-only file system.");
    EXPECT_EQ(result.bytesShared, 0U);
    volume().remount("rw");
    EXPECT_TRUE(scan().complete());
    EXPECT_TRUE(shares("a", "b"));
}

TEST_F(Faults, fullDriveLosesNothing)
{
    const std::string content = randomBytes(60 * kMiB, 1);
    writeFile(root() / "a", content);
    writeFile(root() / "b", content);
    // In ever smaller pieces, until not even a block is free.
    for (const std::size_t size : {kMiB, kMiB / 16, kMiB / 256}) {
        const std::string piece = randomBytes(size, size);
        const FileDescriptor filler(
            ::open((root() / ("fill" + std::to_string(size))).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        while (::write(filler.get(), piece.data(), piece.size()) > 0) {
        }
        ::fsync(filler.get());
    }
    runProgram({"sync", "-f", root().string()});
    const auto before = contents(root());
    const SharingResult result = scan();
    if (!result.error.empty()) {
        EXPECT_EQ(result.error, "Repeated data cannot be shared: No space left on device.");
    }
    EXPECT_EQ(contents(root()), before);
    volume().unmount();
    volume().mount();
    EXPECT_EQ(contents(root()), before);
}

TEST_F(Faults, indexMayBeDeletedOrDamagedAtAnyTime)
{
    writeFile(root() / "a", randomBytes(2 * kMiB, 1));
    writeFile(root() / "b", randomBytes(2 * kMiB, 1));
    writeFile(root() / "c", randomBytes(kMiB, 2) + randomBytes(2 * kMiB, 1));
    ASSERT_TRUE(scan().complete());
    const auto before = inventory(root());
    for (const char* file : {"files.idx", "blocks.idx"}) {
        const std::string good = readFile(index() / file);
        for (const std::string& bad :
             {std::string(), good.substr(0, 20), good.substr(0, good.size() - 1), good + "x",
              good.substr(0, 70) + "?" + good.substr(71), randomBytes(good.size(), 3)})
        {
            writeFile(index() / file, bad);
            const SharingResult result = scan();
            EXPECT_TRUE(result.complete()) << file << ": " << result.error;
            EXPECT_EQ(readFile(index() / file).size(), good.size());
        }
        fs::remove(index() / file);
        EXPECT_TRUE(scan().complete());
    }
    fs::remove_all(index());
    EXPECT_EQ(scan().filesHashed, 2U);
    EXPECT_EQ(inventory(root()), before);
}

TEST_F(Faults, indexOfAnotherDriveIsNotBelieved)
{
    writeFile(root() / "a", randomBytes(kMiB, 1));
    writeFile(root() / "b", randomBytes(kMiB, 1));
    ASSERT_EQ(scan().filesHashed, 2U);
    ASSERT_EQ(scan().filesHashed, 0U);
    std::string foreign = readFile(index() / "files.idx");
    foreign[10] = foreign[10] == '0' ? '1' : '0';
    writeFile(index() / "files.idx", foreign);
    EXPECT_EQ(scan().filesHashed, 2U);
}

TEST_F(Faults, indexThatCannotBeWrittenIsReportedAndTheSharingStays)
{
    writeFile(root() / "a", randomBytes(kMiB, 1));
    writeFile(root() / "b", randomBytes(kMiB, 1));
    writeFile(index(), "a file where the folder should be");
    const SharingResult result = scan();
    EXPECT_FALSE(result.error.empty());
    fs::remove(index());
    EXPECT_TRUE(scan().complete());
    EXPECT_TRUE(shares("a", "b"));
}

TEST_F(Faults, stopEndsThePassSoonAndTheNextOneGoesOn)
{
    for (int number = 0; number < 40; ++number) {
        writeFile(root() / std::to_string(number), randomBytes(kMiB, static_cast<std::uint64_t>(number / 2)));
    }
    std::stop_source stop;
    ScanSettings stopped = settings();
    int hashed = 0;
    stopped.onStep = [&](ScanStep step, const std::string&) {
        if (step == ScanStep::Hash && ++hashed == 21) {
            stop.request_stop();
        }
    };
    const SharingResult result = shareRepeatedData(stopped, stop.get_token());
    EXPECT_TRUE(result.cancelled);
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.filesHashed, 20U);
    const SharingResult next = scan();
    EXPECT_TRUE(next.complete());
    EXPECT_EQ(next.filesHashed, 20U);
    EXPECT_EQ(next.filesShared, 20U);
}

TEST_F(Faults, killedPassLeavesWholeFiles)
{
    for (int number = 0; number < 60; ++number) {
        writeFile(root() / std::to_string(number),
                  randomBytes(2 * kMiB, static_cast<std::uint64_t>(number / 3)));
    }
    const auto before = inventory(root());
    for (int round = 1; round <= 8; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            ScanSettings doomed = settings();
            int steps = 0;
            doomed.onStep = [&](ScanStep, const std::string&) {
                if (++steps == round * 11) {
                    ::kill(::getpid(), SIGKILL);
                }
            };
            static_cast<void>(shareRepeatedData(doomed, {}));
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(inventory(root()), before) << "after round " << round;
    }
    const SharingResult result = scan();
    EXPECT_TRUE(result.complete());
    EXPECT_EQ(inventory(root()), before);
    EXPECT_TRUE(shares("0", "2"));
}

TEST_F(Faults, swapLikeFilesWithoutChecksumsAreRefusedAndOthersGoOn)
{
    writeFile(root() / "a", randomBytes(kMiB, 1));
    const int plain = ::open((root() / "b").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    int flags = FS_NOCOW_FL;
    ASSERT_EQ(::ioctl(plain, FS_IOC_SETFLAGS, &flags), 0);
    const std::string content = randomBytes(kMiB, 1);
    ASSERT_EQ(::pwrite(plain, content.data(), content.size(), 0), static_cast<ssize_t>(content.size()));
    ASSERT_EQ(::fsync(plain), 0);
    ::close(plain);
    writeFile(root() / "c", content);
    const SharingResult result = scan();
    EXPECT_TRUE(result.complete()) << result.error;
    EXPECT_GE(result.filesRefused, 1U);
    EXPECT_TRUE(shares("a", "c"));
    EXPECT_EQ(readFile(root() / "b"), content);
}

TEST_F(Faults, missingDriveIsAnError)
{
    ScanSettings gone = settings();
    gone.root = root() / "none";
    const SharingResult result = shareRepeatedData(gone, {});
    EXPECT_NE(result.error.find("No such file or directory"), std::string::npos);
}

TEST_F(Faults, kernelComparesEveryByteItself)
{
    std::string other = randomBytes(40 * kMiB, 1);
    writeFile(root() / "a", other);
    other[33 * kMiB] = static_cast<char>(other[33 * kMiB] ^ 1);
    writeFile(root() / "b", other);
    const FileDescriptor a(::open((root() / "a").c_str(), O_RDONLY | O_CLOEXEC));
    const FileDescriptor b(::open((root() / "b").c_str(), O_RDONLY | O_CLOEXEC));
    Throttle throttle(1, {});
    const ShareOutcome outcome = shareRange({a.get(), 0}, {b.get(), 0}, 40 * kMiB, throttle);
    EXPECT_EQ(outcome.end, ShareOutcome::End::Differs);
    EXPECT_EQ(outcome.shared, 32 * kMiB);
    EXPECT_EQ(readFile(root() / "b"), other);
}

} // namespace

} // namespace ferrobank::drive
