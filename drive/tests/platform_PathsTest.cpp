#include "platform/Failure.h"
#include "platform/Paths.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

namespace ferrobank::drive::testing {
namespace {

TEST(Paths, everythingLiesBelowTheHomeFolder)
{
    const Paths paths = Paths::of("/home/u", "/run/user/1000", {});
    EXPECT_EQ(paths.drive, "/home/u/Ferrobank");
    EXPECT_EQ(paths.image, "/home/u/Library/Application Support/Ferrobank/store/drive.btrfs");
    EXPECT_EQ(paths.log, "/home/u/Library/Application Support/Ferrobank/log/ferrobank.log");
    EXPECT_EQ(paths.runtime, "/run/user/1000/ferrobank");
    EXPECT_EQ(paths.autostartEntry, "/home/u/.config/autostart/org.ferrobank.Ferrobank.agent.desktop");
}

TEST(Paths, withoutRuntimeFolderTheCacheHoldsOnePerBoot)
{
    EXPECT_EQ(Paths::of("/home/u", {}, {}).runtime, "/home/u/.cache/ferrobank/run-" + bootId());
    EXPECT_EQ(bootId().size(), 36U);
}

TEST(Paths, relativeVariablesAreIgnored)
{
    ::setenv("HOME", "/home/u/", 1);
    ::setenv("XDG_RUNTIME_DIR", "relative", 1);
    ::setenv("XDG_CONFIG_HOME", "/etc/own", 1);
    const Paths paths = Paths::fromEnvironment();
    EXPECT_EQ(paths.home, "/home/u");
    EXPECT_EQ(paths.runtime, "/home/u/.cache/ferrobank/run-" + bootId());
    EXPECT_EQ(paths.autostartEntry.parent_path(), "/etc/own/autostart");
}

TEST(Paths, rootDoesNotWorkInTheHomeOfAnotherUser)
{
    if (::geteuid() != 0) {
        GTEST_SKIP() << "this needs root";
    }
    const TemporaryFolder folder;
    ::setenv("HOME", folder.path().c_str(), 1);
    EXPECT_NO_THROW(static_cast<void>(Paths::fromEnvironment()));
    ASSERT_EQ(::chown(folder.path().c_str(), 64321, 0), 0);
    EXPECT_THROW(static_cast<void>(Paths::fromEnvironment()), Failure);
}

} // namespace
} // namespace ferrobank::drive::testing
