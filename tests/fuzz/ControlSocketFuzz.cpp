// Any bytes from a client of the serving process's socket, in pieces of any size: a request that is read back
// as it was, an answer, or the end of the connection. The same bytes as a server's answer to a client.

#include "FuzzFolder.h"
#include "control/ControlServer.h"
#include "control/LineSocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace ferrobank::drive;
using namespace std::chrono_literals;

namespace {

int connectTo(const std::filesystem::path& socket)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, socket.c_str(), sizeof address.sun_path - 1);
    const int connection = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connection < 0 ||
        ::connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        std::abort();
    return connection;
}

void send(int connection, const std::uint8_t* data, std::size_t size)
{
    const std::size_t piece = size == 0 ? 1 : 1 + data[0] % 64;
    for (std::size_t sent = 0; sent < size; sent += piece) {
        if (::send(connection, data + sent, std::min(piece, size - sent), MSG_NOSIGNAL) < 0)
            break; // it has hung up, as it may
    }
    ::shutdown(connection, SHUT_WR);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const FuzzFolder folder;
    static const std::filesystem::path socket = folder.path() / "control.sock";
    static ControlServer server(socket, [](const std::string&) { std::abort(); });

    const int connection = connectTo(socket);
    send(connection, data, size);
    // It ends by itself once every request was answered: nothing holds the connection any more.
    for (bool open = true; open;) {
        char bytes[512];
        const ssize_t got = ::recv(connection, bytes, sizeof bytes, MSG_DONTWAIT);
        open = got > 0 || (got < 0 && errno == EAGAIN);
        while (const auto waiting = server.next()) {
            const auto again = Request::fromLine(waiting->request.toLine());
            if (!again || again->operation != waiting->request.operation)
                std::abort();
            waiting->answer(Reply{});
        }
        pollfd readable{.fd = connection, .events = POLLIN, .revents = 0};
        ::poll(&readable, 1, 1);
    }
    ::close(connection);

    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        std::abort();
    send(ends[0], data, std::min<std::size_t>(size, 65536));
    if (const auto line = readLine(ends[1], 100ms)) {
        if (line->find('\n') != std::string::npos || line->size() > size)
            std::abort();
    }
    ::close(ends[0]);
    ::close(ends[1]);
    return 0;
}
