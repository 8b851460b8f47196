#include "figures/DeviceCounters.h"
#include "serving/Housekeeping.h"
#include "testing/DriveHost.h"
#include "testing/ScanVolume.h"

#include <fcntl.h>

#include <atomic>
#include <memory>
#include <stdexcept>

namespace ferrobank::drive::testing {
namespace {

using namespace std::chrono_literals;

constexpr std::int64_t kDay = 24 * 60 * 60;
constexpr std::int64_t kToday = 20'000 * kDay;

/// A drive whose housekeeping looks all the time, by clocks that the test sets.
class HousekeepingTest : public ScanVolume {
protected:
    void SetUp() override
    {
        ScanVolume::SetUp();
        if (IsSkipped()) {
            return;
        }
        writeFile(root() / "a", plainBytes(100'000, 1));
        writeFile(root() / "b", plainBytes(100'000, 1));
        ASSERT_EQ(runProgram({"sync", "-f", root().string()}), 0);
        paths = Paths::of(root().parent_path() / "home", root().parent_path(), root().parent_path());
        wall = kToday;
        memory.lastSharing = kToday - 3600;
        memory.lastReading = kToday - 3600;
    }

    void TearDown() override { housekeeping.reset(); }

    void start()
    {
        HousekeepingPace pace;
        pace.look = 5ms;
        pace.wallClock = [this] { return wall.load(); };
        pace.monotonicClock = [this] { return std::chrono::steady_clock::time_point(monotonic.load()); };
        pace.conditions = [this] {
            ScanConditions conditions;
            conditions.load = load.load();
            conditions.cores = 2;
            return conditions;
        };
        pace.walkAllowed = [this](const std::optional<LastWalk>& last, std::uint64_t generation) {
            if (looksThatFail > 0) {
                --looksThatFail;
                throw std::runtime_error("no luck");
            }
            return mayWalk(last, generation);
        };
        pace.quietSeconds = quietSeconds;
        const FileDescriptor folder(::open(root().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        housekeeping = std::make_unique<Housekeeping>(paths, Log(paths.log), root(),
                                                      volumeState(folder.get())->uuid, memory, pace, mailbox);
    }

    /// The state once it is as wanted; as it is after a while where it does not become so.
    bool becomes(const std::function<bool()>& condition)
    {
        return waitUntil([&] {
            mailbox.applyTo(state);
            return condition();
        });
    }

    /// The same while minutes pass in which nobody changes anything; the file system itself may, now and
    /// then.
    bool becomesInTime(const std::function<bool()>& condition)
    {
        return becomes([&] {
            monotonic = monotonic.load() + 61s;
            return condition();
        });
    }

    /// Lets it look some more times: an hour passes, at whose end it posts what it has seen of a new file.
    void letItLook()
    {
        const std::optional<std::uint64_t> before = state.volumeUsed;
        writeFile(root() / ("another" + std::to_string(monotonic.load().count())), plainBytes(50'000, 7));
        ASSERT_EQ(runProgram({"sync", "-f", root().string()}), 0);
        monotonic = monotonic.load() + 1h;
        ASSERT_TRUE(becomes([&] { return state.volumeUsed != before; }));
    }

    /// The same without the hour.
    void letItWalk()
    {
        const std::optional<std::uint64_t> before = state.volumeUsed;
        writeFile(root() / ("more" + std::to_string(monotonic.load().count())), plainBytes(50'000, 7));
        ASSERT_EQ(runProgram({"sync", "-f", root().string()}), 0);
        ASSERT_TRUE(becomes([&] { return state.volumeUsed != before; }));
    }

    Paths paths;
    std::atomic<std::int64_t> wall = kToday;
    std::atomic<std::chrono::nanoseconds> monotonic{1h};
    std::atomic<double> load = 0;
    std::int64_t quietSeconds = 0;
    std::atomic<int> looksThatFail = 0;
    HousekeepingMemory memory;
    Mailbox mailbox;
    State state;
    std::unique_ptr<Housekeeping> housekeeping;
};

TEST_F(HousekeepingTest, filesAreSummedUpAtOnceAndSharedWhenTheDriveIsQuiet)
{
    start();
    ASSERT_TRUE(becomes([&] { return state.volumeUsed.has_value(); }));
    EXPECT_EQ(*state.volumeUsed, 2U * 100 * 1024);
    EXPECT_EQ(state.sharing.last, 0) << "not before a minute has passed";
    ASSERT_TRUE(becomesInTime([&] { return state.sharing.last == kToday; }));
    EXPECT_TRUE(shares("a", "b"));
    EXPECT_FALSE(state.sharing.error);
}

TEST_F(HousekeepingTest, clockThatJumpsAheadBringsThePassesThatAreDueAndNoMore)
{
    start();
    ASSERT_TRUE(becomes([&] { return state.volumeUsed.has_value(); }));
    ASSERT_TRUE(becomesInTime([&] { return state.sharing.last == kToday; }));
    EXPECT_EQ(state.integrity.lastReading, 0) << "it was read an hour ago";
    wall = kToday + 3650 * kDay;
    ASSERT_TRUE(becomesInTime([&] { return state.integrity.lastReading == kToday + 3650 * kDay; }));
    ASSERT_TRUE(becomesInTime([&] { return state.sharing.last == kToday + 3650 * kDay; }))
        << "an unchanged drive counts as looked through";
    EXPECT_EQ(state.integrity.unreadableFiles, 0U);
}

TEST_F(HousekeepingTest, clockThatIsSetBackPutsNoPassOff)
{
    memory.lastSharing = kToday + 3650 * kDay;
    memory.lastReading = kToday + 3650 * kDay;
    start();
    ASSERT_TRUE(becomesInTime([&] { return state.sharing.last == kToday; }))
        << "however far in the future the last one lies";
    ASSERT_TRUE(becomesInTime([&] { return state.integrity.lastReading == kToday; }));
    EXPECT_TRUE(shares("a", "b"));
}

TEST_F(HousekeepingTest, clockThatJumpsToAndFroBringsOnePassForEachJumpAtMost)
{
    start();
    ASSERT_TRUE(becomes([&] { return state.volumeUsed.has_value(); }));
    ASSERT_TRUE(becomesInTime([&] { return state.sharing.last == kToday; }));
    for (const std::int64_t jump : {-400 * kDay, 0L, 400 * kDay, 0L}) {
        wall = kToday + jump;
        ASSERT_TRUE(becomesInTime([&] {
            return state.sharing.last == kToday + jump && state.integrity.lastReading == kToday + jump;
        })) << jump;
    }
    EXPECT_EQ(readFile(root() / "a"), plainBytes(100'000, 1));
}

TEST_F(HousekeepingTest, newDriveIsReadAWeekLater)
{
    memory = {};
    start();
    ASSERT_TRUE(becomes([&] { return state.integrity.lastReading == kToday; }));
    wall = kToday + 6 * kDay;
    letItLook();
    EXPECT_EQ(state.integrity.lastReading, kToday);
    wall = kToday + 8 * kDay;
    EXPECT_TRUE(becomesInTime([&] { return state.integrity.lastReading == kToday + 8 * kDay; }));
}

TEST_F(HousekeepingTest, busyComputerIsLeftAloneUntilThePassIsLongOverdue)
{
    load = 2.5;
    memory.lastSharing = kToday - 30 * kDay;
    start();
    ASSERT_TRUE(becomes([&] { return state.sharing.waitsFor == SharingWait::Load; }));
    monotonic = monotonic.load() + 59min;
    letItWalk();
    EXPECT_EQ(state.sharing.last, 0);
    monotonic = monotonic.load() + 4h;
    EXPECT_TRUE(becomes([&] { return state.sharing.last == kToday; }));
}

TEST_F(HousekeepingTest, driveThatIsWrittenEverySecondGetsItsFirstPassAndOthersAfterIt)
{
    memory.lastSharing = 0;
    start();
    int second = 0;
    // Each look sees a drive that was changed just now.
    const auto writeOn = [&] {
        writeFile(root() / "log", std::to_string(++second));
        return runProgram({"sync", "-f", root().string()}) == 0;
    };
    ASSERT_TRUE(writeOn());
    ASSERT_TRUE(becomes([&] { return state.volumeUsed.has_value(); }));
    const auto begin = monotonic.load();
    const auto passComes = [&](std::chrono::seconds step) {
        return waitUntil([&] {
            mailbox.applyTo(state);
            writeOn();
            wall = wall.load() + step.count();
            monotonic = monotonic.load() + step;
            return state.sharing.last != 0 && !state.sharing.running;
        });
    };
    ASSERT_TRUE(passComes(20s)) << "no pass in " << (monotonic.load() - begin).count() / 1'000'000'000
                                << " s";
    EXPECT_TRUE(shares("a", "b"));
    EXPECT_GE(monotonic.load() - begin, 10min) << "a quiet moment is waited for at first";

    writeFile(root() / "c", plainBytes(100'000, 1));
    state.sharing.last = 0;
    ASSERT_TRUE(passComes(100s));
    EXPECT_TRUE(waitUntil([&] { return shares("a", "c"); }));
}

TEST_F(HousekeepingTest, passThatIsAskedForWaitsForNothing)
{
    load = 2.5;
    start();
    ASSERT_TRUE(becomes([&] { return state.sharing.waitsFor == SharingWait::Load; }));
    housekeeping->holdSharing(Housekeeping::Held::Yes);
    ASSERT_TRUE(becomes([&] { return state.sharing.waitsFor == SharingWait::Resume; }));
    housekeeping->shareNow();
    ASSERT_TRUE(becomes([&] { return state.sharing.askedPasses == 1; }));
    EXPECT_TRUE(shares("a", "b"));
    EXPECT_GT(state.sharing.shared, 0U);
    EXPECT_FALSE(state.sharing.running);
}

TEST_F(HousekeepingTest, heldSharingWaitsUntilItIsResumed)
{
    memory.held = true;
    start();
    ASSERT_TRUE(becomesInTime([&] { return state.sharing.waitsFor == SharingWait::Resume; }));
    monotonic = monotonic.load() + 48h;
    letItWalk();
    EXPECT_EQ(state.sharing.last, 0);
    housekeeping->holdSharing(Housekeeping::Held::No);
    EXPECT_TRUE(becomesInTime([&] { return state.sharing.last == kToday; }));
}

TEST_F(HousekeepingTest, fileThatWasAtWorkDuringAPassIsSharedByALaterOneThoughNothingElseChanges)
{
    // Seconds of the files' own clock: the first pass comes sooner than that, the drive's clock being faster.
    quietSeconds = 3;
    start();
    ASSERT_TRUE(becomesInTime([&] { return state.sharing.last == kToday; }));
    EXPECT_TRUE(becomesInTime([&] { return shares("a", "b"); }));
}

TEST_F(HousekeepingTest, everythingIsReadAtOnceWhenThatIsDue)
{
    memory.readingDue = true;
    load = 2.5;
    start();
    state.integrity.readingDue = ReadingReason::CutShort;
    ASSERT_TRUE(becomes([&] { return state.integrity.readingDue == ReadingReason::None; }));
    EXPECT_EQ(state.integrity.lastReading, kToday);
    EXPECT_EQ(state.integrity.unreadableFiles, 0U);
    EXPECT_FALSE(state.integrity.reading);
}

TEST_F(HousekeepingTest, pausedSharingWaitsUntilItIsAllowedAgain)
{
    memory.lastSharing = kToday - 30 * kDay;
    load = 2.5;
    start();
    ASSERT_TRUE(becomes([&] { return state.volumeUsed.has_value(); }));
    housekeeping->setSharing(Housekeeping::Sharing::Paused);
    load = 0;
    letItLook();
    EXPECT_EQ(state.sharing.last, 0);
    housekeeping->setSharing(Housekeeping::Sharing::Allowed);
    EXPECT_TRUE(becomes([&] { return state.sharing.last == kToday; }));
}

TEST_F(HousekeepingTest, somethingUnforeseenIsLoggedOnceAndTheNextLookComes)
{
    looksThatFail = 5;
    start();
    ASSERT_TRUE(becomes([&] { return state.volumeUsed.has_value(); }));
    EXPECT_EQ(looksThatFail, 0);
    const std::string log = readFile(paths.log);
    const std::size_t first = log.find("Something unforeseen happened: no luck.");
    ASSERT_NE(first, std::string::npos) << log;
    EXPECT_EQ(log.find("no luck", first + 40), std::string::npos) << log;
}

TEST_F(HousekeepingTest, driveThatHasGoneIsNoError)
{
    start();
    ASSERT_TRUE(becomes([&] { return state.volumeUsed.has_value(); }));
    ASSERT_EQ(runProgram({"umount", "-l", root().string()}), 0);
    monotonic = monotonic.load() + 1h;
    wall = kToday + 30 * kDay;
    housekeeping.reset();
    volume().mount("noatime");
    EXPECT_FALSE(state.sharing.error);
}

} // namespace
} // namespace ferrobank::drive::testing
