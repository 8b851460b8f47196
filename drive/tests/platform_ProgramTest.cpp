#include "platform/FileDescriptor.h"
#include "platform/FileLock.h"
#include "platform/Files.h"
#include "platform/Program.h"
#include "testing/DriveHost.h"
#include "testing/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

namespace ferrobank::drive::testing {
namespace {

TEST(Program, statusAndBothOutputsComeBack)
{
    const ProgramOutcome outcome =
        runSystemProgram("sh", {"-c", "echo one; echo two >&2; exit 3"}, std::chrono::seconds(10));
    EXPECT_EQ(outcome.end, ProgramOutcome::End::Exited);
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(outcome.output, "one\ntwo\n");
    EXPECT_FALSE(outcome.succeeded());
}

TEST(Program, missingOneIsNotFound)
{
    EXPECT_EQ(runSystemProgram("no-such-program", {}, std::chrono::seconds(1)).end,
              ProgramOutcome::End::NotFound);
}

TEST(Program, hangingOneIsKilledAtTheLimit)
{
    const auto begin = std::chrono::steady_clock::now();
    const ProgramOutcome outcome = runSystemProgram("sleep", {"60"}, std::chrono::seconds(1));
    EXPECT_EQ(outcome.end, ProgramOutcome::End::TimedOut);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
}

TEST(Program, floodOfOutputIsCutAndDoesNotBlock)
{
    const ProgramOutcome outcome =
        runSystemProgram("head", {"-c", "1000000", "/dev/zero"}, std::chrono::seconds(20));
    EXPECT_TRUE(outcome.succeeded());
    EXPECT_EQ(outcome.output.size(), 64U * 1024);
}

TEST(Program, argumentsAreNotTouchedByAnyShell)
{
    EXPECT_EQ(runSystemProgram("echo", {"a b", "$HOME", "'"}, std::chrono::seconds(10)).output,
              "a b $HOME '\n");
}

TEST(Program, inputIsHandedOnAndStaysOpenWhileTheProgramRuns)
{
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "lock";
    std::optional<FileLock> lock = FileLock::tryTake(path);
    ASSERT_TRUE(lock);
    // The program lets go of its outputs but goes on, as one that root runs would; our own descriptor is
    // closed.
    const ProgramOutcome outcome =
        runSystemProgram("sh", {"-c", "readlink /proc/self/fd/0; exec 3<&0; sleep 1 <&3 >&- 2>&- & exit 0"},
                         std::chrono::seconds(10), lock->descriptor());
    EXPECT_EQ(outcome.output, path.string() + "\n");
    lock.reset();
    EXPECT_FALSE(FileLock::tryTake(path)) << "the lock is still the program's";
    while (!FileLock::tryTake(path)) {
        ::poll(nullptr, 0, 5);
    }
}

TEST(Program, oneThatOnlyRootMayEndIsNotWaitedForWithoutALimit)
{
    if (::geteuid() != 0) {
        GTEST_SKIP() << "a program that this user may not end needs root";
    }
    const TemporaryFolder folder;
    const std::filesystem::path started = folder.path() / "started";
    const std::filesystem::path number = folder.path() / "number";
    ASSERT_EQ(::mkfifo(started.c_str(), 0600), 0);
    const auto start = std::chrono::steady_clock::now();
    const pid_t user = ::fork();
    if (user == 0) {
        // Once root's program runs, this process is an ordinary user's, as that of somebody who called
        // pkexec.
        std::thread becomeOrdinary([&] {
            replaceFile(number, readSmallFile(started).value_or(std::string()));
            EXPECT_EQ(::setresuid(65534, 65534, 65534), 0);
        });
        const ProgramOutcome outcome = runSystemProgram(
            "sh", {"-c", "echo $$ >\"$0\"; exec sleep 60", started.string()}, std::chrono::seconds(1));
        becomeOrdinary.join();
        ::_exit(outcome.end == ProgramOutcome::End::TimedOut && ::geteuid() == 65534 ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(user, &status, 0), user);
    EXPECT_EQ(status, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(40));
    const pid_t program = std::stoi(readSmallFile(number).value_or("0"));
    ASSERT_GT(program, 0);
    ::kill(program, SIGKILL);
}

TEST(Program, isNotLookedForInTheCallersOwnFolders)
{
    const TemporaryFolder folder;
    for (const char* name : {"echo", "made-up"}) {
        const std::filesystem::path program = folder.path() / name;
        replaceFile(program, "#!/bin/sh\necho taken from the environment\n");
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    }
    const std::string before = ::getenv("PATH");
    ::setenv("PATH", (folder.path().string() + ":" + before).c_str(), 1);
    ::setenv("LC_ALL", "de_DE.UTF-8", 1);
    const ProgramOutcome outcome = runSystemProgram("echo", {"own"}, std::chrono::seconds(10));
    const ProgramOutcome variables = runSystemProgram("env", {}, std::chrono::seconds(10));
    const ProgramOutcome madeUp = runSystemProgram("made-up", {}, std::chrono::seconds(10));
    ::setenv("PATH", before.c_str(), 1);
    ::unsetenv("LC_ALL");
    EXPECT_EQ(outcome.output, "own\n");
    EXPECT_EQ(madeUp.end, ProgramOutcome::End::NotFound);
    EXPECT_EQ(variables.output, "PATH=/usr/sbin:/usr/bin:/sbin:/bin\nLC_ALL=C.UTF-8\n");
}

TEST(Program, inheritsNothingButItsThreeDescriptors)
{
    // As somebody would leave it who started us.
    const FileDescriptor forgotten(::open("/dev/null", O_RDONLY));
    const FileDescriptor high(::fcntl(forgotten.get(), F_DUPFD, 700));
    ASSERT_GE(high.get(), 700);
    const ProgramOutcome outcome = runSystemProgram(
        "sh",
        {"-c", "for n in 0 1 2 3 4 5 6 7 8 9 \"$0\" 700; do [ -e /proc/$$/fd/$n ] && echo $n; done",
         std::to_string(forgotten.get())},
        std::chrono::seconds(10));
    EXPECT_EQ(outcome.output, "0\n1\n2\n");
}

TEST(Program, killedCallerTakesItsProgramAlong)
{
    const TemporaryFolder folder;
    const std::filesystem::path note = folder.path() / "process";
    const pid_t caller = ::fork();
    if (caller == 0) {
        static_cast<void>(runSystemProgram(
            "sh", {"-c", "echo $$ > \"$0.new\"; mv \"$0.new\" \"$0\"; exec sleep 60", note.string()},
            std::chrono::seconds(60)));
        ::_exit(0);
    }
    ASSERT_TRUE(waitUntil([&] { return readSmallFile(note).has_value(); }));
    const std::string process = "/proc/" + std::to_string(std::stoi(*readSmallFile(note)));
    ::kill(caller, SIGKILL);
    ::waitpid(caller, nullptr, 0);
    EXPECT_TRUE(waitUntil([&] {
        // Nobody may be there to take a zombie's status.
        const std::string facts = readSmallFile(process + "/stat").value_or(") Z");
        return facts[facts.rfind(") ") + 2] == 'Z';
    }));
}

} // namespace
} // namespace ferrobank::drive::testing
