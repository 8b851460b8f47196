#include "control/ControlClient.h"
#include "control/ControlServer.h"
#include "control/LineSocket.h"
#include "control/SocketAddress.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <ctime>
#include <stdexcept>
#include <thread>
#include <vector>

namespace ferrobank::drive::testing {
namespace {

using namespace std::chrono_literals;

bool becomesReadable(int descriptor)
{
    pollfd waiting{.fd = descriptor, .events = POLLIN, .revents = 0};
    return ::poll(&waiting, 1, 5000) == 1;
}

void ignore(const std::string&) {}

/// Connected, and silent until something is sent.
FileDescriptor connectTo(const std::filesystem::path& socket)
{
    const SocketAddress address = SocketAddress::of(socket);
    FileDescriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    EXPECT_EQ(::connect(connection.get(), address.get(), sizeof address.address), 0);
    return connection;
}

/// Another user on this thread while it lives; the rest of the process stays who it is.
class AnotherUserHere {
public:
    AnotherUserHere() { EXPECT_EQ(::syscall(SYS_setresuid, -1, kNobody, -1), 0); }

    AnotherUserHere(const AnotherUserHere&) = delete;
    AnotherUserHere& operator=(const AnotherUserHere&) = delete;

    ~AnotherUserHere() { ::syscall(SYS_setresuid, -1, 0, -1); }

private:
    static constexpr uid_t kNobody = 65534;
};

/// Leaves the process no descriptor for anything new while it lives.
class NoDescriptorLeft {
public:
    NoDescriptorLeft()
    {
        ::getrlimit(RLIMIT_NOFILE, &_before);
        rlimit few = _before;
        few.rlim_cur = 64;
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
        for (int copy = ::dup(STDERR_FILENO); copy >= 0; copy = ::dup(STDERR_FILENO)) {
            _taken.emplace_back(copy);
        }
        EXPECT_EQ(errno, EMFILE);
    }

    NoDescriptorLeft(const NoDescriptorLeft&) = delete;
    NoDescriptorLeft& operator=(const NoDescriptorLeft&) = delete;

    ~NoDescriptorLeft() { ::setrlimit(RLIMIT_NOFILE, &_before); }

private:
    rlimit _before{};
    std::vector<FileDescriptor> _taken;
};

std::chrono::nanoseconds processorTime()
{
    timespec used{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

TEST(Message, everyRequestComesBackFromItsLine)
{
    for (const Operation operation :
         {Operation::Ping, Operation::Attach, Operation::Restart, Operation::Reexec, Operation::PauseDedup,
          Operation::ShareNow, Operation::HoldSharing, Operation::Resume, Operation::FilesRead,
          Operation::Replaced, Operation::Accept, Operation::Stop, Operation::Quit})
    {
        const auto found = Request::fromLine(Request{.operation = operation, .done = 3, .total = 4}.toLine());
        ASSERT_TRUE(found);
        EXPECT_EQ(found->operation, operation);
    }
}

TEST(Message, nonsenseIsNoRequest)
{
    for (const char* line : {"", "{}", "ping", "{\"op\":1}", "{\"op\":\"format\"}", "[1"}) {
        EXPECT_FALSE(Request::fromLine(line)) << line;
    }
}

TEST(Message, refusalCarriesItsWords)
{
    const auto found = Reply::fromLine(Reply{.ok = false, .code = "busy", .text = "In use."}.toLine());
    ASSERT_TRUE(found);
    EXPECT_FALSE(found->ok);
    EXPECT_EQ(found->code, "busy");
    EXPECT_EQ(found->text, "In use.");
}

TEST(ControlServer, answersPingWhileTheLoopIsBusy)
{
    const TemporaryFolder folder;
    const ControlServer server(folder.path() / "control.sock", ignore);
    const auto reply = ask(folder.path() / "control.sock", {.operation = Operation::Ping}, 5s);
    ASSERT_TRUE(reply);
    EXPECT_TRUE(reply->ok);
}

TEST(ControlServer, queuesOtherRequestsForTheLoop)
{
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    ControlServer server(socket, ignore);
    std::optional<Reply> reply;
    {
        const std::jthread client([&] { reply = ask(socket, {.operation = Operation::Stop}, 10s); });
        ASSERT_TRUE(becomesReadable(server.wakeUp()));
        const auto request = server.next();
        ASSERT_TRUE(request);
        EXPECT_EQ(request->request.operation, Operation::Stop);
        request->answer({.ok = false, .code = "busy", .text = "In use."});
    }
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->text, "In use.");
    EXPECT_FALSE(server.next());
}

TEST(ControlServer, droppedRequestEndsTheWaiting)
{
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    ControlServer server(socket, ignore);
    std::optional<Reply> reply = Reply::success();
    {
        const std::jthread client([&] { reply = ask(socket, {.operation = Operation::Restart}, 10s); });
        ASSERT_TRUE(becomesReadable(server.wakeUp()));
        server.next().reset();
    }
    EXPECT_FALSE(reply);
}

TEST(ControlServer, silentClientsDoNotKeepOthersFromAnAnswer)
{
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    const ControlServer server(socket, ignore);
    std::vector<FileDescriptor> silent;
    while (silent.size() < 16) {
        silent.push_back(connectTo(socket));
    }
    // Before even one of them has been let go.
    EXPECT_TRUE(ask(socket, {.operation = Operation::Ping}, ControlServer::kRequestLimit / 2));
    EXPECT_TRUE(ask(socket, {.operation = Operation::Ping}, kPingLimit));
}

TEST(ControlServer, clientsAreLetGoWhenTheySayNothingOrAreTooMany)
{
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    const ControlServer server(socket, ignore);
    std::vector<FileDescriptor> silent;
    while (silent.size() < 2 * ControlServer::kMostClients) {
        silent.push_back(connectTo(socket));
        EXPECT_TRUE(silent.size() % 8 != 0 || ask(socket, {.operation = Operation::Ping}, kPingLimit));
    }
    for (const FileDescriptor& one : silent) {
        char nothing = 0;
        EXPECT_TRUE(becomesReadable(one.get()));
        EXPECT_EQ(::recv(one.get(), &nothing, 1, MSG_DONTWAIT), 0);
    }
}

TEST(ControlServer, requestThatComesInPiecesIsUnderstood)
{
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    const ControlServer server(socket, ignore);
    const FileDescriptor client = connectTo(socket);
    const std::string line = Request{.operation = Operation::Ping, .done = 0, .total = 0}.toLine();
    ASSERT_TRUE(sendLine(client.get(), line.substr(0, 5)));
    EXPECT_TRUE(ask(socket, {.operation = Operation::Ping}, kPingLimit));
    ASSERT_TRUE(sendLine(client.get(), line.substr(5)));
    const auto answer = readLine(client.get(), kPingLimit);
    ASSERT_TRUE(answer);
    EXPECT_TRUE(Reply::fromLine(*answer)->ok);
}

TEST(ControlServer, anotherUserGetsNoAnswer)
{
    if (::geteuid() != 0) {
        GTEST_SKIP() << "another user can be tried by root only";
    }
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    const ControlServer server(socket, ignore);
    // What else keeps others out is taken away.
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(socket.c_str(), 0666), 0);
    {
        const AnotherUserHere other;
        EXPECT_FALSE(ask(socket, {.operation = Operation::Ping}, 5s));
    }
    EXPECT_TRUE(ask(socket, {.operation = Operation::Ping}, 5s));
}

TEST(ControlServer, onlyAdmittedPeersAreServed)
{
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    std::atomic<bool> open = false;
    std::atomic<uid_t> seen = 0;
    const ControlServer server(socket, ignore, [&](const ucred& peer) {
        seen = peer.uid;
        return open.load();
    });
    EXPECT_FALSE(ask(socket, {.operation = Operation::Ping}, 5s));
    EXPECT_EQ(seen, ::geteuid());
    open = true;
    EXPECT_TRUE(ask(socket, {.operation = Operation::Ping}, 5s));
    EXPECT_TRUE(ControlServer::isSameUser({.pid = 1, .uid = ::geteuid(), .gid = 0}));
    EXPECT_FALSE(ControlServer::isSameUser({.pid = 1, .uid = ::geteuid() + 1, .gid = 0}));
}

TEST(ControlServer, goesOnAfterSomethingUnforeseen)
{
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    std::atomic<int> failures = 2;
    std::atomic<int> told = 0;
    const ControlServer server(
        socket, [&](const std::string& words) { told += words.find("no luck") != std::string::npos; },
        [&](const ucred&) {
            if (failures-- > 0) {
                throw std::runtime_error("no luck");
            }
            return true;
        });
    EXPECT_FALSE(ask(socket, {.operation = Operation::Ping}, 5s));
    EXPECT_FALSE(ask(socket, {.operation = Operation::Ping}, 5s));
    EXPECT_TRUE(ask(socket, {.operation = Operation::Ping}, 5s));
    EXPECT_EQ(told, 2);
}

TEST(ControlServer, withoutADescriptorItWaitsInsteadOfSpinning)
{
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    const ControlServer server(socket, ignore);
    const SocketAddress address = SocketAddress::of(socket);
    const FileDescriptor client(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    {
        const NoDescriptorLeft none;
        ASSERT_EQ(::connect(client.get(), address.get(), sizeof address.address), 0);
        ASSERT_TRUE(
            sendLine(client.get(), Request{.operation = Operation::Ping, .done = 0, .total = 0}.toLine()));
        const auto before = processorTime();
        EXPECT_FALSE(readLine(client.get(), 1s));
        // A tenth of what a thread gets that spins on a computer with twenty others at work.
        EXPECT_LT(processorTime() - before, 5ms);
    }
    EXPECT_TRUE(readLine(client.get(), 5s)) << "the client has been waiting all the time";
}

TEST(ControlServer, nonsenseGetsARefusal)
{
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    const ControlServer server(socket, ignore);
    const FileDescriptor client = connectTo(socket);
    ASSERT_TRUE(sendLine(client.get(), "nonsense\n"));
    const auto line = readLine(client.get(), 5s);
    ASSERT_TRUE(line);
    EXPECT_FALSE(Reply::fromLine(*line)->ok);
}

TEST(ControlServer, worksInAFolderWhosePathIsLongerThanAnAddress)
{
    const TemporaryFolder folder;
    const std::filesystem::path deep = folder.path() / std::string(120, 'x');
    std::filesystem::create_directories(deep);
    const ControlServer server(deep / "control.sock", ignore);
    EXPECT_TRUE(ask(deep / "control.sock", {.operation = Operation::Ping}, 5s));
}

TEST(ControlServer, replacesAStaleSocketAndIsPrivate)
{
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    {
        const ControlServer first(socket, ignore);
    }
    EXPECT_FALSE(std::filesystem::exists(socket));
    const ControlServer second(socket, ignore);
    struct stat status{};
    ASSERT_EQ(::stat(socket.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST(ControlClient, serverThatIsStoppedIsNoAnswerInTime)
{
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    const SocketAddress address = SocketAddress::of(socket);
    const FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::bind(listener.get(), address.get(), sizeof address.address), 0);
    ASSERT_EQ(::listen(listener.get(), 1), 0);
    // Two wait in its queue, so that there is no room for another one.
    const FileDescriptor first = connectTo(socket);
    const FileDescriptor second = connectTo(socket);
    EXPECT_FALSE(ask(socket, {.operation = Operation::Ping}, 300ms));
}

TEST(ControlClient, nobodyListeningIsNoAnswer)
{
    const TemporaryFolder folder;
    EXPECT_FALSE(ask(folder.path() / "control.sock", {.operation = Operation::Ping}, 1s));
    EXPECT_FALSE(ask(folder.path() / "missing/control.sock", {.operation = Operation::Ping}, 1s));
}

} // namespace
} // namespace ferrobank::drive::testing
