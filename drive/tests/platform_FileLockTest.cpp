#include "platform/Failure.h"
#include "platform/FileLock.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

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
