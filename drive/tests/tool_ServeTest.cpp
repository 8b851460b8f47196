#include "control/SocketAddress.h"
#include "mounting/DirectBackEnd.h"
#include "mounting/Volume.h"
#include "platform/FileLock.h"
#include "platform/Files.h"
#include "platform/ToolPrograms.h"
#include "state/ServerProbe.h"
#include "testing/DriveHost.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pwd.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

namespace ferrobank::drive::testing {
namespace {

using nlohmann::json;

/// A copy of the socket that a process listens at.
FileDescriptor listenerOf(pid_t process)
{
    const FileDescriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
    const std::string folder = "/proc/" + std::to_string(process) + "/fd";
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const int number = std::stoi(entry.path().filename().string());
        FileDescriptor copy(static_cast<int>(::syscall(SYS_pidfd_getfd, handle.get(), number, 0)));
        int listens = 0;
        socklen_t size = sizeof listens;
        if (::getsockopt(copy.get(), SOL_SOCKET, SO_ACCEPTCONN, &listens, &size) == 0 && listens == 1) {
            return copy;
        }
    }
    return {};
}

/// How often the main thread of a process has gone to sleep.
std::string waits(pid_t process)
{
    const std::string text = readSmallFile("/proc/" + std::to_string(process) + "/status").value_or("");
    const std::size_t at = text.find("\nvoluntary_ctxt_switches:");
    return at == std::string::npos ? "" : text.substr(at, text.find('\n', at + 1) - at);
}

class Serve : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!volumesUnavailable().empty()) {
            GTEST_SKIP() << volumesUnavailable();
        }
        host = std::make_unique<DriveHost>();
    }

    [[nodiscard]] json status() const { return json::parse(host->status()); }

    std::unique_ptr<DriveHost> host;
};

TEST_F(Serve, statusOfAnEmptyHomeNamesOnlyWhatIsAlwaysThere)
{
    const json root = status();
    EXPECT_EQ(root, json({{"installed", false},
                          {"mounted", false},
                          {"mountpoint", host->paths().drive.string()},
                          {"log", host->paths().log.string()}}));
}

TEST_F(Serve, statusOfAnEmptyHomeWritesNothing)
{
    EXPECT_FALSE(host->status().empty());
    EXPECT_TRUE(std::filesystem::is_empty(host->paths().home));
}

TEST_F(Serve, firstStartMakesTheDriveAndMountsIt)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    const json root = status();
    EXPECT_EQ(root["installed"], true);
    EXPECT_EQ(root["mounted"], true);
    EXPECT_FALSE(root.contains("attach_error"));
    EXPECT_LT(root["store_bytes"].get<std::uint64_t>(), 32U << 20U);
    EXPECT_EQ(std::filesystem::file_size(host->paths().image), std::uint64_t{16} << 30U);
    std::ofstream(host->paths().drive / "file") << "text";
    EXPECT_TRUE(std::filesystem::exists(host->paths().drive / "file"));
}

TEST_F(Serve, driveOfRootIsMountedWithoutSetuidAndDevices)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    struct statvfs drive{};
    ASSERT_EQ(::statvfs(host->paths().drive.c_str(), &drive), 0);
    EXPECT_NE(drive.f_flag & ST_NOSUID, 0U);
    EXPECT_NE(drive.f_flag & ST_NODEV, 0U);
}

TEST_F(Serve, imageIsReadOnlyWhileAttachedAndWritableAfterwards)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    struct stat attached{};
    ::stat(host->paths().image.c_str(), &attached);
    EXPECT_EQ(attached.st_mode & 07777, 0400U);
    host->endServing(SIGTERM);
    struct stat detached{};
    ::stat(host->paths().image.c_str(), &detached);
    EXPECT_EQ(detached.st_mode & 07777, 0600U);
    EXPECT_FALSE(std::filesystem::exists(host->paths().openMarker));
}

TEST_F(Serve, endSignalUnmountsAndNextStartBringsTheFilesBack)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    ASSERT_TRUE(writeRandomFile(host->paths().drive / "a", 3'000'000, 1));
    const auto before = fingerprint(host->paths().drive);
    host->endServing(SIGTERM);
    EXPECT_FALSE(host->isMounted());
    EXPECT_FALSE(std::filesystem::exists(host->paths().drive));
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    EXPECT_EQ(fingerprint(host->paths().drive), before);
}

TEST_F(Serve, busyDriveStaysMountedAtTheEndAndIsAdoptedLater)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    ASSERT_TRUE(writeRandomFile(host->paths().drive / "a", 1000, 1));
    {
        const FileDescriptor open(::open((host->paths().drive / "a").c_str(), O_RDONLY | O_CLOEXEC));
        host->endServing(SIGTERM);
    }
    EXPECT_TRUE(host->isMounted());
    EXPECT_NE(host->logText().find("The drive stays mounted: The drive is in use by"), std::string::npos);
    const std::string loop = findVolume(host->paths().image, Recognise::ByName)->loop;
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    EXPECT_EQ(findVolume(host->paths().image, Recognise::ByName)->loop, loop);
    EXPECT_NE(host->logText().find("mounted already"), std::string::npos);
}

TEST_F(Serve, secondServeEndsWithZeroAndChangesNothing)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    const pid_t first = host->servingProcess();
    EXPECT_EQ(host->run({"serve"}).status, 0);
    EXPECT_EQ(host->servingProcess(), first);
    EXPECT_NE(host->logText().find("served already by another process"), std::string::npos);
}

TEST_F(Serve, secondServeWithForgedDescriptorsEndsToo)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    const pid_t first = host->servingProcess();
    // They are open, and nothing else about them is true.
    for (const char* descriptors : {"0,1,-1", "1,2,0", "2,2,2"}) {
        host->setVariable("FERROBANK_ADOPT", descriptors);
        EXPECT_EQ(host->run({"serve"}).status, 0);
    }
    host->setVariable("FERROBANK_ADOPT", "");
    EXPECT_EQ(host->servingProcess(), first);
    EXPECT_EQ(host->logText().find("mounted already"), std::string::npos) << host->logText();
    EXPECT_EQ(host->run({"status", "--json"}).errorText, "");
    EXPECT_EQ(status()["mounted"], true);
}

TEST_F(Serve, serveAfterAKilledHolderStartsEvenWhenItsNumberIsTakenAgain)
{
    std::filesystem::create_directories(host->paths().store);
    // Its locks are gone a moment after it: until then the file is locked, and its number may be ours.
    auto dying = FileLock::tryTake(host->paths().storeLock);
    ASSERT_TRUE(dying);
    LockText text = LockText::of(::getpid(), host->paths().runtime);
    text.start -= 1;
    ASSERT_GT(::pwrite(dying->descriptor(), text.toText().data(), text.toText().size(), 0), 0);
    host->makeSmallStore();
    const pid_t started = host->startServing();
    // It looks at the lock again and again instead of leaving the drive to the one that is gone.
    std::string before;
    int looks = 0;
    EXPECT_TRUE(waitUntil([&] {
        const std::string now = waits(started);
        looks += now != before ? 1 : 0;
        before = now;
        return looks > 20;
    }));
    dying.reset();
    EXPECT_TRUE(waitUntil([&] { return host->isMounted(); })) << host->logText();
}

TEST_F(Serve, sixteenSilentConnectionsDoNotMakeTheServerSeemDead)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    const SocketAddress address = SocketAddress::of(host->paths().socket());
    std::vector<FileDescriptor> silent;
    while (silent.size() < 16) {
        silent.emplace_back(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        ASSERT_EQ(::connect(silent.back().get(), address.get(), sizeof address.address), 0);
    }
    const ToolRun check = host->run({"check", "--json"});
    EXPECT_EQ(check.output.find("not running"), std::string::npos) << check.output;
    EXPECT_NE(check.output.find(R"({"id":"running","title":"Ferrobank is running","state":"pass"})"),
              std::string::npos)
        << check.output;
}

TEST_F(Serve, secondServeWithAnotherRuntimeFolderEndsToo)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    host->setVariable("XDG_RUNTIME_DIR", (host->folder() / "other").string());
    EXPECT_EQ(host->run({"serve"}).status, 0);
    EXPECT_EQ(loopsOf(host->paths().image, Recognise::ByFile).size(), 1U);
}

TEST_F(Serve, commandsFindTheServingProcessFromAnotherEnvironment)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    host->setVariable("XDG_RUNTIME_DIR", "");
    const ToolRun check = host->run({"check", "--json"});
    EXPECT_NE(check.output.find(R"({"id":"running","title":"Ferrobank is running","state":"pass"})"),
              std::string::npos)
        << check.output;
}

TEST_F(Serve, worksWithoutRuntimeFolderInTheEnvironment)
{
    host->setVariable("XDG_RUNTIME_DIR", "");
    const ToolRun restart = host->run({"restart"});
    EXPECT_EQ(restart.status, 0) << restart.errorText;
    EXPECT_TRUE(host->isMounted());
    EXPECT_TRUE(std::filesystem::exists(host->paths().home / ".cache/ferrobank" / ("run-" + bootId()) /
                                        "state.json"));
    EXPECT_EQ(host->run({"uninstall"}).status, 0);
}

TEST_F(Serve, runtimeFolderThatVanishesComesBack)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    // Renamed first: the server writes into it while it is being emptied.
    std::filesystem::rename(host->paths().runtime, host->folder() / "gone");
    std::filesystem::remove_all(host->folder() / "gone");
    EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(host->paths().state()); }));
    EXPECT_EQ(host->run({"restart"}).status, 0);
}

TEST_F(Serve, runtimeFolderThatWasReplacedByAnotherIsUsed)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    std::filesystem::rename(host->paths().runtime, host->folder() / "gone");
    std::filesystem::create_directory(host->paths().runtime);
    std::filesystem::permissions(host->paths().runtime, std::filesystem::perms::owner_all);
    EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(host->paths().state()); }));
    EXPECT_EQ(host->run({"restart"}).status, 0);
}

TEST_F(Serve, runtimeFolderThatCannotBeMadeLeavesTheDriveMounted)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    const std::filesystem::path inTheWay = host->folder() / "a file";
    std::ofstream(inTheWay).put('x');
    ASSERT_EQ(
        ::renameat2(AT_FDCWD, host->paths().runtime.c_str(), AT_FDCWD, inTheWay.c_str(), RENAME_EXCHANGE), 0);
    EXPECT_TRUE(waitUntil([&] { return host->logText().find("is not a folder") != std::string::npos; }));
    EXPECT_NE(host->servingProcess(), 0);
    EXPECT_TRUE(host->isMounted());
    // Every mount wakes the server, which fails again and says nothing more about it.
    const std::filesystem::path elsewhere = host->folder() / "elsewhere";
    std::filesystem::create_directory(elsewhere);
    for (int turn = 0; turn < 3; ++turn) {
        const std::string before = waits(host->servingProcess());
        ASSERT_EQ(::mount("none", elsewhere.c_str(), "tmpfs", 0, nullptr), 0);
        EXPECT_TRUE(waitUntil([&] { return waits(host->servingProcess()) != before; }));
        ASSERT_EQ(::umount(elsewhere.c_str()), 0);
    }
    const std::string log = host->logText();
    EXPECT_EQ(log.find("is not a folder"), log.rfind("is not a folder")) << log;
    host->endServing(SIGTERM);
    EXPECT_FALSE(host->isMounted());
}

TEST_F(Serve, restartStartsAServingProcessWhereNoneRuns)
{
    const ToolRun restart = host->run({"restart"});
    EXPECT_EQ(restart.status, 0) << restart.errorText;
    EXPECT_EQ(restart.output, "");
    EXPECT_TRUE(host->isMounted());
    EXPECT_NE(host->servingProcess(), 0);
}

TEST_F(Serve, restartUnmountsAndMountsInTheSameProcess)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    const pid_t process = host->servingProcess();
    ASSERT_TRUE(writeRandomFile(host->paths().drive / "a", 100'000, 7));
    const auto before = fingerprint(host->paths().drive);
    EXPECT_EQ(host->run({"restart"}).status, 0);
    EXPECT_EQ(host->servingProcess(), process);
    EXPECT_EQ(fingerprint(host->paths().drive), before);
    EXPECT_NE(host->logText().find("The drive was unmounted."), std::string::npos);
}

TEST_F(Serve, restartOfABusyDriveNamesTheProgramAndChangesNothing)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    ASSERT_TRUE(writeRandomFile(host->paths().drive / "a", 1000, 1));
    const FileDescriptor open(::open((host->paths().drive / "a").c_str(), O_RDONLY | O_CLOEXEC));
    const ToolRun restart = host->run({"restart"});
    EXPECT_EQ(restart.status, 1);
    EXPECT_EQ(restart.errorText, "The drive is in use by tool_serve (" + std::to_string(::getpid()) +
                                     "). Close it and try again.\n");
    EXPECT_TRUE(host->isMounted());
    EXPECT_EQ(status()["mounted"], true);
}

TEST_F(Serve, takeoverKeepsTheMountAndOpenFiles)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    const pid_t process = host->servingProcess();
    std::ofstream writing(host->paths().drive / "open");
    writing << "before ";
    const ToolRun takeover = host->run({"restart", "--keep-mounted"});
    EXPECT_EQ(takeover.status, 0) << takeover.errorText;
    writing << "after";
    writing.close();
    EXPECT_EQ(readSmallFile(host->paths().drive / "open"), "before after");
    EXPECT_EQ(host->servingProcess(), process);
    EXPECT_EQ(host->logText().find("The drive was unmounted."), std::string::npos);
}

TEST_F(Serve, replacedProgramShowsAsPendingUpdateUntilTakenUp)
{
    host->useProgram(installTool(host->folder() / "bundle"));
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    EXPECT_FALSE(status().contains("update_pending"));

    installTool(host->folder() / "bundle");
    EXPECT_EQ(status()["update_pending"], true);

    EXPECT_EQ(host->run({"restart", "--keep-mounted"}).status, 0);
    EXPECT_FALSE(status().contains("update_pending"));
    EXPECT_TRUE(host->isMounted());
}

TEST_F(Serve, programStartedThroughALinkFollowsIt)
{
    const std::filesystem::path link = host->folder() / "current";
    for (const char* version : {"one", "two"}) {
        installTool(host->folder() / version);
    }
    std::filesystem::create_symlink("one", link);
    host->useProgram(link / "ferrobank");
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    EXPECT_FALSE(status().contains("update_pending"));

    std::filesystem::create_symlink("two", host->folder() / "fresh");
    std::filesystem::rename(host->folder() / "fresh", link);
    EXPECT_EQ(status()["update_pending"], true);

    EXPECT_EQ(host->run({"restart", "--keep-mounted"}).status, 0);
    EXPECT_FALSE(status().contains("update_pending"));
    EXPECT_TRUE(host->isMounted());
    EXPECT_EQ(std::filesystem::read_symlink("/proc/" + std::to_string(host->servingProcess()) + "/exe"),
              host->folder() / "two/ferrobank-drive");
}

TEST_F(Serve, takeoverByABrokenProgramLeavesTheOldOneAtWork)
{
    const std::filesystem::path program = installTool(host->folder() / "bundle");
    host->useProgram(program);
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    host->useProgram(FERROBANK_TOOL);
    // First the half that serves, while the half that everybody calls is whole.
    for (const std::filesystem::path& missing : {driveProgramOf(program), program}) {
        std::filesystem::remove(missing);
        const ToolRun takeover = host->run({"restart", "--keep-mounted"});
        EXPECT_EQ(takeover.status, 1);
        EXPECT_EQ(takeover.errorText,
                  "The drive's new program cannot be started: No such file or directory.\n");
        EXPECT_EQ(status()["mounted"], true);
    }
    EXPECT_EQ(host->run({"check", "--json"}).output.find("not running"), std::string::npos);
}

TEST_F(Serve, hangUpSignalTakesUpTheProgramToo)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    const pid_t process = host->servingProcess();
    ::kill(process, SIGHUP);
    EXPECT_TRUE(waitUntil([&] { return host->logText().find("mounted already") != std::string::npos; }));
    EXPECT_EQ(host->servingProcess(), process);
}

TEST_F(Serve, killedServeLeavesTheMountAndTheNextOneAdoptsIt)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    ASSERT_TRUE(writeRandomFile(host->paths().drive / "a", 2'000'000, 3));
    const auto before = fingerprint(host->paths().drive);
    host->endServing(SIGKILL);
    EXPECT_EQ(status()["mounted"], true);
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    EXPECT_EQ(fingerprint(host->paths().drive), before);
    EXPECT_EQ(loopsOf(host->paths().image, Recognise::ByFile).size(), 1U);
}

TEST_F(Serve, restartOfAServerThatEndsWithoutAnAnswerStartsAnother)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    ASSERT_TRUE(writeRandomFile(host->paths().drive / "a", 2'000'000, 3));
    const auto before = fingerprint(host->paths().drive);
    const pid_t first = host->servingProcess();
    FileDescriptor listener = listenerOf(first);
    ASSERT_TRUE(listener);
    ::kill(first, SIGSTOP);
    ToolRun run;
    std::jthread restart([&] { run = host->run({"restart"}); });
    // Somebody waits to be answered now.
    pollfd waiting{.fd = listener.get(), .events = POLLIN, .revents = 0};
    EXPECT_EQ(::poll(&waiting, 1, 20'000), 1);
    listener.reset();
    host->endServing(SIGKILL);
    restart.join();
    EXPECT_EQ(run.status, 0) << run.errorText;
    EXPECT_NE(host->servingProcess(), first);
    EXPECT_EQ(fingerprint(host->paths().drive), before);
    EXPECT_EQ(loopsOf(host->paths().image, Recognise::ByFile).size(), 1U);
}

TEST_F(Serve, startedWhileAKilledOneStillHoldsTheLocksItWaitsForThem)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    host->endServing(SIGKILL);
    // As the last thread of the killed one would, which is still busy in the kernel.
    std::optional<FileLock> lock;
    ASSERT_TRUE(waitUntil([&] { return (lock = FileLock::tryTake(host->paths().storeLock)).has_value(); }));
    const pid_t next = host->startServing();
    const auto turns = [&] {
        const std::string facts =
            readSmallFile("/proc/" + std::to_string(next) + "/status").value_or(std::string());
        const std::size_t at = facts.find("\nvoluntary_ctxt_switches:");
        return at == std::string::npos ? 0 : std::atoi(facts.c_str() + at + 25);
    };
    EXPECT_TRUE(waitUntil([&] { return host->servingProcess() == next; }));
    const int before = turns();
    EXPECT_TRUE(waitUntil([&] { return turns() >= before + 5; })) << "it does not wait";
    EXPECT_EQ(status()["mounted"], true);
    lock.reset();
    EXPECT_TRUE(waitUntil([&] {
        const std::string state = readSmallFile(host->paths().state()).value_or(std::string());
        return state.find("\"pid\":" + std::to_string(next) + ",") != std::string::npos &&
               state.find(R"("phase":"mounted")") != std::string::npos;
    })) << host->logText();
}

TEST_F(Serve, mountLeftByAKilledPreparationIsUsedUp)
{
    host->makeSmallStore();
    const std::filesystem::path scratch = host->paths().runtime / "top-level";
    std::filesystem::create_directories(scratch);
    std::filesystem::permissions(host->paths().runtime, std::filesystem::perms(0700));
    {
        const FreshLoop loop = makeLoop(host->paths().image);
        ASSERT_EQ(::mount(loop.device.c_str(), scratch.c_str(), "btrfs", MS_NOATIME, "discard=sync"), 0);
    }
    EXPECT_TRUE(host->serveAndMount()) << host->logText();
    EXPECT_FALSE(std::filesystem::exists(scratch));
    EXPECT_EQ(loopsOf(host->paths().image, Recognise::ByFile).size(), 1U);
}

TEST_F(Serve, killAtAnyMomentOfTheFirstStartLeavesNothingThatTheNextCannotUse)
{
    for (int delay = 0; delay <= 400; delay += 20) {
        host->startServing();
        ::usleep(static_cast<useconds_t>(delay) * 1000);
        host->endServing(SIGKILL);
        ASSERT_TRUE(host->serveAndMount()) << "after a kill at " << delay << " ms: " << host->logText();
        ASSERT_EQ(loopsOf(host->paths().image, Recognise::ByFile).size(), 1U);
        ASSERT_EQ(host->run({"uninstall", "--delete-store"}).status, 0)
            << "after a kill at " << delay << " ms";
        ASSERT_FALSE(std::filesystem::exists(host->paths().store));
    }
}

TEST_F(Serve, killAtAnyMomentOfALaterStartKeepsAllFiles)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    for (unsigned number = 0; number < 20; ++number) {
        ASSERT_TRUE(writeRandomFile(host->paths().drive / std::to_string(number), 50'000, number));
    }
    const auto before = fingerprint(host->paths().drive);
    for (int delay = 0; delay <= 200; delay += 10) {
        host->endServing(SIGTERM);
        ASSERT_FALSE(host->isMounted()) << host->logText();
        host->startServing();
        ::usleep(static_cast<useconds_t>(delay) * 1000);
        host->endServing(SIGKILL);
        ASSERT_TRUE(host->serveAndMount()) << "after a kill at " << delay << " ms: " << host->logText();
        ASSERT_EQ(fingerprint(host->paths().drive), before) << "after a kill at " << delay << " ms";
    }
}

TEST_F(Serve, figuresFollowTheFiles)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    ASSERT_TRUE(writeRandomFile(host->paths().drive / "a", 5'000'000, 1));
    ASSERT_EQ(::system(("cp --reflink=always " + (host->paths().drive / "a").string() + " " +
                        (host->paths().drive / "b").string())
                           .c_str()),
              0);
    host->endServing(SIGTERM);
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    ASSERT_TRUE(waitUntil([&] {
        const json root = status();
        return root.contains("volume_used") && root["volume_used"].get<std::uint64_t>() >= 10'000'000U;
    })) << host->status();
    const json root = status();
    EXPECT_LT(root["volume_used"].get<std::uint64_t>(), 10'100'000U);
}

TEST_F(Serve, statusIsAnsweredWithoutTheProgramBehindIt)
{
    const std::filesystem::path program = installTool(host->folder() / "bundle");
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    std::filesystem::remove(driveProgramOf(program));
    host->useProgram(program);
    EXPECT_EQ(status()["mounted"], true);

    const ToolRun other = host->run({"check", "--json"});
    EXPECT_EQ(other.status, 1);
    EXPECT_EQ(other.errorText,
              "The program " + driveProgramOf(program).string() +
                  " cannot be started: No such file or directory. Install Ferrobank anew.\n");
}

TEST_F(Serve, statusIsTheSameForPeopleWithoutVariables)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    // No HOME: the account's own home folder counts, which only the larger program can look up.
    host->setVariable("HOME", "");
    const json root = json::parse(host->run({"status", "--json"}).output);
    EXPECT_EQ(root["mountpoint"], std::string(::getpwuid(::getuid())->pw_dir) + "/Ferrobank");
}

TEST_F(Serve, statusThatNobodyReadsEndsWithoutADeathOrAWait)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    const std::string command =
        "HOME='" + host->paths().home.string() + "' " FERROBANK_TOOL " status --json >/dev/full";
    EXPECT_EQ(WEXITSTATUS(::system(command.c_str())), 1);
}

TEST_F(Serve, statusIsWholeAThousandTimesAndTenAtOnce)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    std::vector<std::jthread> askers;
    std::atomic<int> good = 0;
    for (int asker = 0; asker < 10; ++asker) {
        askers.emplace_back([&, asker] {
            for (int turn = 0; turn < 100; ++turn) {
                const json root =
                    json::parse(host->run({"status", "--json"}, "errors-" + std::to_string(asker)).output,
                                nullptr, false);
                good += root.is_object() && root.value("mounted", false) ? 1 : 0;
            }
        });
    }
    askers.clear();
    EXPECT_EQ(good, 1000);
}

TEST_F(Serve, statusDoesNotTouchTheDrive)
{
    ASSERT_TRUE(host->serveAndMount()) << host->logText();
    const std::string trace = (host->folder() / "trace").string();
    if (::system("command -v strace >/dev/null") != 0) {
        GTEST_SKIP() << "strace is not installed";
    }
    const std::string command = "HOME='" + host->paths().home.string() + "' XDG_RUNTIME_DIR='" +
                                host->paths().runtime.parent_path().string() +
                                "' strace -f -e trace=file -o '" + trace +
                                "' " FERROBANK_TOOL " status --json >/dev/null";
    ASSERT_EQ(::system(command.c_str()), 0);
    const std::string calls = readSmallFile(trace).value_or(std::string());
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls.find(host->paths().drive.string() + "\""), std::string::npos);
    EXPECT_EQ(calls.find(host->paths().drive.string() + "/"), std::string::npos);
}

} // namespace
} // namespace ferrobank::drive::testing
