#include "platform/Failure.h"
#include "state/Work.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ferrobank::drive::testing {
namespace {

class TheWork : public ::testing::Test {
protected:
    TemporaryFolder folder;
    Paths paths = Paths::of(folder.path(), folder.path() / "run", {});
};

TEST_F(TheWork, isNothingBeforeAndAfterACommand)
{
    EXPECT_FALSE(Work::atWork(paths));
    {
        const WorkLock lock = WorkLock::take(paths, "export");
        EXPECT_TRUE(Work::atWork(paths));
    }
    EXPECT_FALSE(Work::atWork(paths));
    EXPECT_FALSE(std::filesystem::exists(paths.work));
}

TEST_F(TheWork, tellsPhaseAndBytesAsTheyWereSaidLast)
{
    WorkLock lock = WorkLock::take(paths, "uninstall");
    lock.tell(Work::Phase::Copying, 12'345'678'901'234U, 99'999'999'999'999U);
    lock.tell(Work::Phase::Verifying, 1, 2);
    const Work expected{.command = "uninstall",
                        .process = ::getpid(),
                        .phase = Work::Phase::Verifying,
                        .done = 1,
                        .total = 2};
    EXPECT_EQ(Work::atWork(paths), expected);
}

TEST_F(TheWork, secondCommandIsToldWhoIsAtIt)
{
    const WorkLock lock = WorkLock::take(paths, "export");
    try {
        static_cast<void>(WorkLock::take(paths, "uninstall"));
        FAIL() << "two at once";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code(), "at-work");
        EXPECT_EQ(failure.text(), "“ferrobank export” (process " + std::to_string(::getpid()) +
                                      ") is at work on the drive. Wait until it ends, then try again.");
    }
}

TEST_F(TheWork, ofAKilledCommandIsOver)
{
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        WorkLock lock = WorkLock::take(paths, "uninstall");
        lock.tell(Work::Phase::Copying, 1, 2);
        static_cast<void>(::write(ready[1], "x", 1));
        ::pause();
        ::_exit(0);
    }
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    EXPECT_TRUE(Work::atWork(paths));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_FALSE(Work::atWork(paths));
    EXPECT_NO_THROW(static_cast<void>(WorkLock::take(paths, "export")));
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST_F(TheWork, readersDoNotKeepACommandFromStarting)
{
    const pid_t reader = ::fork();
    if (reader == 0) {
        for (;;) {
            static_cast<void>(Work::atWork(paths));
        }
    }
    for (int turn = 0; turn < 200; ++turn) {
        EXPECT_NO_THROW(static_cast<void>(WorkLock::take(paths, "export")));
    }
    ::kill(reader, SIGKILL);
    ::waitpid(reader, nullptr, 0);
}

TEST_F(TheWork, textOfSomethingElseIsNoWork)
{
    EXPECT_FALSE(Work::fromText(""));
    EXPECT_FALSE(Work::fromText("{}"));
    EXPECT_FALSE(Work::fromText(R"({"command":"x","process":1,"phase":"resting","done":0,"total":0})"));
    const Work work{.command = "export", .process = 7, .phase = Work::Phase::Copying, .done = 3, .total = 4};
    EXPECT_EQ(Work::fromText(work.toText()), work);
}

} // namespace
} // namespace ferrobank::drive::testing
