#include "control/ControlClient.h"
#include "control/ControlServer.h"
#include "control/LineSocket.h"
#include "control/SocketAddress.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <thread>

namespace ferrobank::drive::testing {
namespace {

using namespace std::chrono_literals;

bool becomesReadable(int descriptor)
{
    pollfd waiting{.fd = descriptor, .events = POLLIN, .revents = 0};
    return ::poll(&waiting, 1, 5000) == 1;
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
    const ControlServer server(folder.path() / "control.sock");
    const auto reply = ask(folder.path() / "control.sock", {.operation = Operation::Ping}, 5s);
    ASSERT_TRUE(reply);
    EXPECT_TRUE(reply->ok);
}

TEST(ControlServer, queuesOtherRequestsForTheLoop)
{
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    ControlServer server(socket);
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
    ControlServer server(socket);
    std::optional<Reply> reply = Reply::success();
    {
        const std::jthread client([&] { reply = ask(socket, {.operation = Operation::Restart}, 10s); });
        ASSERT_TRUE(becomesReadable(server.wakeUp()));
        server.next().reset();
    }
    EXPECT_FALSE(reply);
}

TEST(ControlServer, silentClientDoesNotKeepOthersFromAnAnswer)
{
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    const ControlServer server(socket);
    const SocketAddress address = SocketAddress::of(socket);
    const FileDescriptor silent(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::connect(silent.get(), address.get(), sizeof address.address), 0);
    EXPECT_TRUE(ask(socket, {.operation = Operation::Ping}, 5s));
}

TEST(ControlServer, nonsenseGetsARefusal)
{
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    const ControlServer server(socket);
    const SocketAddress address = SocketAddress::of(socket);
    const FileDescriptor client(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::connect(client.get(), address.get(), sizeof address.address), 0);
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
    const ControlServer server(deep / "control.sock");
    EXPECT_TRUE(ask(deep / "control.sock", {.operation = Operation::Ping}, 5s));
}

TEST(ControlServer, replacesAStaleSocketAndIsPrivate)
{
    const TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / "control.sock";
    {
        const ControlServer first(socket);
    }
    EXPECT_FALSE(std::filesystem::exists(socket));
    const ControlServer second(socket);
    struct stat status{};
    ASSERT_EQ(::stat(socket.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST(ControlClient, nobodyListeningIsNoAnswer)
{
    const TemporaryFolder folder;
    EXPECT_FALSE(ask(folder.path() / "control.sock", {.operation = Operation::Ping}, 1s));
    EXPECT_FALSE(ask(folder.path() / "missing/control.sock", {.operation = Operation::Ping}, 1s));
}

} // namespace
} // namespace ferrobank::drive::testing
