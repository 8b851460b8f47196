#include "state/State.h"

#include "platform/Failure.h"
#include "platform/FileLock.h"
#include "state/Figures.h"
#include "state/ServerProbe.h"
#include "testing/DriveHost.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <limits>
#include <utility>

namespace ferrobank::drive::testing {
namespace {

State sample()
{
    State state;
    state.process = 42;
    state.bootId = "boot";
    state.version = "1.2";
    state.executablePath = "/path with spaces/ferrobank";
    state.executable = {.device = 1, .inode = 2, .modified = 3};
    state.phase = Phase::Failed;
    state.backEnd = "udisks";
    state.attachError = Problem{.code = "busy", .text = "In use."};
    state.saved = 77;
    state.volumeUsed = std::numeric_limits<std::uint64_t>::max();
    state.sharing = {.last = 5,
                     .seconds = 1.5,
                     .shared = 6,
                     .error = "words",
                     .paused = true,
                     .waitsFor = SharingWait::Power,
                     .running = WorkProgress{.done = 1, .total = 2},
                     .askedPasses = 3};
    state.space = {.hostFree = 7, .reserve = 8, .guard = 9, .level = SpaceLevel::Critical};
    state.integrity = {.deviceErrors = 1,
                       .settledErrors = 2,
                       .unreadableFiles = 4,
                       .unreadable = {"a"},
                       .lastReading = 10,
                       .readingDue = ReadingReason::Superblock,
                       .reading = WorkProgress{.done = 3, .total = 4},
                       .olderImage = true};
    state.readOnly = true;
    state.exportState = ExportState{.done = 1, .total = 2};
    return state;
}

TEST(State, comesBackFromItsTextAsItWas)
{
    EXPECT_EQ(State::fromJson(sample().toJson()), sample());
    EXPECT_EQ(State::fromJson(State().toJson()), State());
}

TEST(State, ofAProcessThatWasStartedBeforeAnUpdateIsUnderstood)
{
    std::string text = sample().toJson();
    const auto drop = [&text](const std::string& key, const std::string& value) {
        for (const std::string& part : {"," + key + ":" + value, key + ":" + value + ","}) {
            if (const std::size_t at = text.find(part); at != std::string::npos) {
                text.erase(at, part.size());
                return;
            }
        }
        FAIL() << key;
    };
    drop("\"paused\"", "true");
    drop("\"waits_for\"", "\"power\"");
    drop("\"running\"", "{\"done\":1,\"total\":2}");
    drop("\"asked_passes\"", "3");
    drop("\"settled_errors\"", "2");
    drop("\"reading_due\"", "\"superblock\"");
    drop("\"reading\"", "{\"done\":3,\"total\":4}");
    drop("\"older_image\"", "true");
    const std::optional<State> found = State::fromJson(text);
    ASSERT_TRUE(found) << text;
    EXPECT_FALSE(found->sharing.paused);
    EXPECT_EQ(found->integrity.readingDue, ReadingReason::None);
}

TEST(State, halfAFileOrAnotherFormatIsNoState)
{
    const std::string text = sample().toJson();
    EXPECT_FALSE(State::fromJson(text.substr(0, text.size() / 2)));
    EXPECT_FALSE(State::fromJson(""));
    EXPECT_FALSE(State::fromJson("[]"));
    std::string later = text;
    later.replace(later.find("\"v\":1"), 5, "\"v\":2");
    EXPECT_FALSE(State::fromJson(later));
    std::string odd = text;
    odd.replace(odd.find("failed"), 6, "asleep");
    EXPECT_FALSE(State::fromJson(odd));
}

TEST(State, invalidLettersInNamesDoNotStopIt)
{
    State state = sample();
    state.integrity.unreadable = {"name\xFF"};
    EXPECT_TRUE(State::fromJson(state.toJson()));
}

TEST(Figures, comeBackFromTheirFile)
{
    const TemporaryFolder folder;
    const Figures figures{.uuid = "u",
                          .volumeUsed = 1,
                          .saved = 4,
                          .walkGeneration = 2,
                          .guard = 3,
                          .since = 4,
                          .lastReading = 5,
                          .lastSharing = 6,
                          .unreadableFiles = 7,
                          .unreadable = {"a", "b"},
                          .generation = 8,
                          .sharingPaused = true,
                          .settledErrors = 9,
                          .olderImage = true};
    figures.write(folder.path() / "figures.json");
    EXPECT_EQ(Figures::read(folder.path() / "figures.json"), figures);
}

TEST(Figures, missingOrDamagedFileIsNone)
{
    const TemporaryFolder folder;
    EXPECT_FALSE(Figures::read(folder.path() / "figures.json"));
    replaceFile(folder.path() / "figures.json", "{\"uuid\":");
    EXPECT_FALSE(Figures::read(folder.path() / "figures.json"));
    replaceFile(folder.path() / "figures.json", "{\"uuid\":3}");
    EXPECT_FALSE(Figures::read(folder.path() / "figures.json"));
}

TEST(LockText, holdsProcessAndFolder)
{
    const auto found = LockText::fromText(
        LockText{.process = 17, .start = 4711, .bootId = "a-b", .runtime = "/run/a b"}.toText());
    ASSERT_TRUE(found);
    EXPECT_EQ(found->process, 17);
    EXPECT_EQ(found->start, 4711U);
    EXPECT_EQ(found->bootId, "a-b");
    EXPECT_EQ(found->runtime, "/run/a b");
    for (const char* text :
         {"", "17", "17 ", "17 1 b relative", "x 1 b /run", "17 /run", "17 1 b", "17 1 b "})
    {
        EXPECT_FALSE(LockText::fromText(text)) << text;
    }
}

TEST(LockText, holderLivesUntilItIsKilledAndNotOnlyUntilItIsForgotten)
{
    EXPECT_TRUE(LockText::of(::getpid(), "/run").isAlive());
    const pid_t child = ::fork();
    if (child == 0) {
        ::pause();
    }
    const LockText holder = LockText::of(child, "/run");
    EXPECT_TRUE(holder.isAlive());
    ::kill(child, SIGKILL);
    siginfo_t end{};
    ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(child), &end, WEXITED | WNOWAIT), 0);
    EXPECT_FALSE(holder.isAlive()) << "its status was not taken yet";
    ::waitpid(child, nullptr, 0);
    EXPECT_FALSE(holder.isAlive());
}

TEST(LockText, processThatHasTheNumberByNowIsNotTheHolder)
{
    LockText holder = LockText::of(::getpid(), "/run");
    ASSERT_TRUE(holder.isAlive());
    holder.start -= 1;
    EXPECT_FALSE(holder.isAlive()) << "one that was started earlier";
    holder = LockText::of(::getpid(), "/run");
    holder.bootId = "00000000-0000-0000-0000-000000000000";
    EXPECT_FALSE(holder.isAlive()) << "one of an earlier run of the computer";
}

TEST(LockText, staysTheSameWhenTheProcessBecomesAnotherProgram)
{
    const TemporaryFolder folder;
    const pid_t child = ::fork();
    if (child == 0) {
        ::execl("/bin/sleep", "sleep", "60", nullptr);
        ::_exit(127);
    }
    const LockText holder = LockText::of(child, "/run");
    EXPECT_TRUE(waitUntil([&] {
        return std::filesystem::read_symlink("/proc/" + std::to_string(child) + "/exe").filename() !=
               std::filesystem::read_symlink("/proc/self/exe").filename();
    }));
    EXPECT_TRUE(holder.isAlive());
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

TEST(ServerProbe, lockOfAKilledHolderIsNoRunningServer)
{
    const TemporaryFolder folder;
    const Paths paths = Paths::of(folder.path() / "home", folder.path(), folder.path() / "config");
    std::filesystem::create_directories(paths.store);
    const auto lock = FileLock::tryTake(paths.storeLock);
    ASSERT_TRUE(lock);
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(0);
    }
    ::waitpid(child, nullptr, 0);
    for (const auto& [holder, running] : {std::pair(::getpid(), true), std::pair(child, false)}) {
        const std::string text = LockText::of(holder, paths.runtime).toText();
        ASSERT_EQ(::pwrite(lock->descriptor(), text.data(), text.size(), 0),
                  static_cast<ssize_t>(text.size()));
        ASSERT_EQ(::ftruncate(lock->descriptor(), static_cast<off_t>(text.size())), 0);
        EXPECT_EQ(ServerProbe::probe(paths).running, running);
    }
}

} // namespace
} // namespace ferrobank::drive::testing
