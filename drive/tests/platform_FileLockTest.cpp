#include "platform/Failure.h"
#include "platform/FileLock.h"
#include "testing/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>

namespace ferrobank::drive::testing {
namespace {

TEST(FileLock, secondTakerGetsNothingUntilTheFirstLetsGo)
{
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "lock";
    EXPECT_FALSE(FileLock::isHeld(file));
    {
        const auto first = FileLock::tryTake(file);
        ASSERT_TRUE(first);
        EXPECT_TRUE(FileLock::isHeld(file));
        EXPECT_FALSE(FileLock::tryTake(file));
    }
    EXPECT_FALSE(FileLock::isHeld(file));
    EXPECT_TRUE(FileLock::tryTake(file));
}

TEST(FileLock, askingNeverKeepsAnybodyFromTakingIt)
{
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "lock";
    ASSERT_TRUE(FileLock::tryTake(file));
    std::atomic<bool> enough = false;
    std::jthread asker([&] {
        while (!enough) {
            static_cast<void>(FileLock::isHeld(file));
        }
    });
    int refused = 0;
    for (int number = 0; number < 20'000; ++number) {
        refused += FileLock::tryTake(file) ? 0 : 1;
    }
    enough = true;
    EXPECT_EQ(refused, 0);
}

TEST(FileLock, holderThatKnowsOnlyTheOtherKindOfLockKeepsItToo)
{
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "lock";
    const FileDescriptor other(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_EQ(::flock(other.get(), LOCK_EX | LOCK_NB), 0);
    EXPECT_FALSE(FileLock::tryTake(file));
}

TEST(FileLock, onlyADescriptorOfTheVeryFileIsInherited)
{
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "lock";
    auto held = FileLock::tryTake(file);
    ASSERT_TRUE(held);
    const auto elsewhere = FileLock::tryTake(folder.path() / "other");
    EXPECT_FALSE(FileLock::inherit(elsewhere->descriptor(), file)) << "another file";
    const FileDescriptor unlocked(::open(file.c_str(), O_RDWR | O_CLOEXEC));
    EXPECT_FALSE(FileLock::inherit(unlocked.get(), file)) << "somebody else has its lock";
    EXPECT_FALSE(FileLock::inherit(-1, file));
    EXPECT_FALSE(FileLock::inherit(9999, file));
    EXPECT_GE(::fcntl(unlocked.get(), F_GETFD), 0) << "what is not believed is left alone";

    const int copy = ::dup(held->descriptor());
    held.reset();
    const auto inherited = FileLock::inherit(copy, file);
    ASSERT_TRUE(inherited);
    EXPECT_EQ(::fcntl(copy, F_GETFD), FD_CLOEXEC);
    EXPECT_FALSE(FileLock::tryTake(file));
}

TEST(FileLock, killedHolderLeavesNoLockBehind)
{
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "lock";
    const pid_t child = ::fork();
    if (child == 0) {
        const auto lock = FileLock::tryTake(file);
        ::raise(SIGKILL);
    }
    ::waitpid(child, nullptr, 0);
    EXPECT_TRUE(FileLock::tryTake(file));
}

TEST(FileLock, linkInItsPlaceIsRefused)
{
    const TemporaryFolder folder;
    std::filesystem::create_symlink("elsewhere", folder.path() / "lock");
    EXPECT_THROW(static_cast<void>(FileLock::tryTake(folder.path() / "lock")), Failure);
}

} // namespace
} // namespace ferrobank::drive::testing
