#include "control/ControlClient.h"
#include "mounting/BackEnd.h"
#include "platform/Failure.h"
#include "platform/Files.h"
#include "serving/Locks.h"
#include "serving/Server.h"
#include "state/ServerProbe.h"
#include "testing/DriveHost.h"
#include "testing/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

namespace ferrobank::drive::testing {
namespace {

using namespace std::chrono_literals;

/// The locks of a process, as it would hand them on.
class Handover : public ::testing::Test {
protected:
    void SetUp() override { locks = Locks::tryTake(paths); }

    [[nodiscard]] Inheritance handedOn() const
    {
        // Another number of the same open file, as it is after `execve`: still locked when the first is
        // closed.
        return {.serveLock = ::dup(locks->serve.descriptor()), .storeLock = ::dup(locks->store.descriptor())};
    }

    TemporaryFolder folder;
    Paths paths = Paths::of(folder.path() / "home", folder.path() / "runtime", folder.path() / "config");
    std::optional<Locks> locks;
};

TEST_F(Handover, nextProgramHasTheLocksWithoutAMomentBetween)
{
    const Inheritance inheritance = handedOn();
    locks.reset();
    locks = Locks::inherit(inheritance, paths);
    ASSERT_TRUE(locks);
    EXPECT_FALSE(Locks::tryTake(paths));
    EXPECT_EQ(::fcntl(inheritance.serveLock, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(::fcntl(inheritance.storeLock, F_GETFD), FD_CLOEXEC);
    EXPECT_TRUE(ServerProbe::probe(paths).running);
}

TEST_F(Handover, descriptorsOfOtherFilesAreNotBelieved)
{
    const FileDescriptor one(::open("/dev/null", O_RDWR | O_CLOEXEC));
    const FileDescriptor other(::open((folder.path() / "file").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    for (const auto& [serve, store] : {std::pair(one.get(), one.get()), std::pair(other.get(), other.get()),
                                       std::pair(0, 1), std::pair(-1, -1), std::pair(one.get(), 9999)})
    {
        EXPECT_FALSE(Locks::inherit({.serveLock = serve, .storeLock = store}, paths)) << serve << store;
    }
    EXPECT_GE(::fcntl(one.get(), F_GETFD), 0);
    EXPECT_GE(::fcntl(other.get(), F_GETFD), 0);
}

TEST_F(Handover, filesThatAreRightButNotLockedAreNotBelieved)
{
    const FileDescriptor serve(::open(paths.serveLock().c_str(), O_RDWR | O_CLOEXEC));
    const FileDescriptor store(::open(paths.storeLock.c_str(), O_RDWR | O_CLOEXEC));
    EXPECT_FALSE(Locks::inherit({.serveLock = serve.get(), .storeLock = store.get()}, paths));
}

TEST_F(Handover, runtimeFolderThatWasClearedAwayGetsALockAnew)
{
    const Inheritance inheritance = handedOn();
    locks.reset();
    std::filesystem::remove_all(paths.runtime);
    locks = Locks::inherit(inheritance, paths);
    ASSERT_TRUE(locks);
    EXPECT_TRUE(FileLock::isHeld(paths.serveLock()));
    EXPECT_NE(locks->serve.descriptor(), inheritance.storeLock);
}

TEST_F(Handover, connectionThatWaitsIsClosedInOtherProgramsAndIsOne)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    const FileDescriptor peer(ends[1]);
    const FileDescriptor waiting = Inheritance{.reply = ends[0]}.takeReply();
    EXPECT_EQ(waiting.get(), ends[0]);
    EXPECT_EQ(::fcntl(ends[0], F_GETFD), FD_CLOEXEC);
    const FileDescriptor file(::open("/dev/null", O_RDWR | O_CLOEXEC));
    EXPECT_FALSE(Inheritance{.reply = file.get()}.takeReply());
    EXPECT_FALSE(Inheritance{.reply = 9999}.takeReply());
    EXPECT_GE(::fcntl(file.get(), F_GETFD), 0);
}

TEST(Inheritance, comesBackFromItsTextAndNonsenseIsNone)
{
    const auto found =
        Inheritance::fromText(Inheritance{.serveLock = 5, .storeLock = 6, .reply = -1, .guard = 7}.toText());
    ASSERT_TRUE(found);
    EXPECT_EQ(found->serveLock, 5);
    EXPECT_EQ(found->storeLock, 6);
    EXPECT_EQ(found->reply, -1);
    EXPECT_EQ(found->guard, 7);
    for (const char* text : {"", "5", "5,6", "5,6,7", "5,6,7,8,9", "a,b,c,d", "5,6,7,8 "}) {
        EXPECT_FALSE(Inheritance::fromText(text)) << text;
    }
}

/// Mounts nothing, and fails in ways that no back end should.
class BrokenBackEnd : public BackEnd {
public:
    explicit BrokenBackEnd(std::atomic<int>& attempts) : _attempts(attempts) {}

    [[nodiscard]] std::string_view name() const override { return "broken"; }

    [[nodiscard]] bool mountsAtHome() const override { return false; }

    void prepare(const std::optional<LoopDevice>&, Interaction) override {}

    Volume attach(const std::optional<LoopDevice>&, Interaction) override
    {
        ++_attempts;
        throw std::out_of_range("no such key");
    }

    Volume attachReadOnly(Interaction interaction) override { return attach({}, interaction); }

    void detach(const Volume&) override { throw std::out_of_range("no such key"); }

private:
    std::atomic<int>& _attempts;
};

/// A server on a thread of this process, for a drive whose store is there already.
class BrokenServer : public Handover {
protected:
    void SetUp() override
    {
        Handover::SetUp();
        serving = std::jthread([this] {
            try {
                Server server(paths, Log(paths.log),
                              {.path = "/no/such/program", .identity = {}, .version = "1"}, std::move(*locks),
                              std::make_unique<BrokenBackEnd>(attempts));
                server.run(FileDescriptor());
            } catch (const std::exception& error) {
                ended = error.what();
            }
        });
        ASSERT_TRUE(waitUntil([&] { return problem().has_value(); })) << ended;
    }

    void TearDown() override { static_cast<void>(ask(paths.socket(), {.operation = Operation::Quit}, 10s)); }

    [[nodiscard]] std::optional<Problem> problem() const
    {
        const std::optional<State> state = State::fromJson(readSmallFile(paths.state()).value_or(""));
        return state ? state->attachError : std::nullopt;
    }

    std::atomic<int> attempts = 0;
    std::string ended;
    std::jthread serving;
};

TEST_F(BrokenServer, unforeseenFailureOfTheMountIsShownAndTheServerServesOn)
{
    ASSERT_TRUE(problem());
    EXPECT_EQ(problem()->text, "The drive could not be mounted: no such key.");
    const auto reply = ask(paths.socket(), {.operation = Operation::Attach}, 30s);
    ASSERT_TRUE(reply);
    EXPECT_FALSE(reply->ok);
    EXPECT_EQ(reply->text, "The drive could not be mounted: no such key.");
    EXPECT_EQ(attempts, 2);
    EXPECT_TRUE(ask(paths.socket(), {.operation = Operation::Ping}, 10s));
}

} // namespace
} // namespace ferrobank::drive::testing
