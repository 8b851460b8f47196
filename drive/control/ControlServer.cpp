#include "control/ControlServer.h"

#include "control/LineSocket.h"
#include "control/SocketAddress.h"
#include "platform/Failure.h"
#include "platform/Guarded.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <utility>
#include <vector>

namespace ferrobank::drive {

namespace {

/// How long to wait for a descriptor to become free, which nothing tells.
constexpr std::chrono::milliseconds kDescriptorStep{100};
constexpr std::chrono::milliseconds kTroubleStep{100};
constexpr std::size_t kLongestLine = 64 * 1024;
constexpr int kBacklog = 16;

void raise(int eventDescriptor)
{
    const std::uint64_t one = 1;
    // The counter cannot overflow with one request at a time; a failed write means it is raised already.
    [[maybe_unused]] const ssize_t put = ::write(eventDescriptor, &one, sizeof one);
}

std::optional<ucred> peerOf(int connection)
{
    ucred peer{};
    socklen_t length = sizeof peer;
    if (::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &length) != 0) {
        return std::nullopt;
    }
    return peer;
}

} // namespace

void PendingRequest::answer(const Reply& reply) const
{
    sendLine(connection.get(), reply.toLine());
}

bool ControlServer::isSameUser(const ucred& peer)
{
    return peer.uid == ::geteuid();
}

ControlServer::ControlServer(const std::filesystem::path& socket, Trouble trouble, Admission admission)
    : _path(socket),
      _trouble(std::move(trouble)),
      _admission(std::move(admission)),
      _listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)),
      _wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      _endUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    const SocketAddress address = SocketAddress::of(_path);
    ::unlink(_path.c_str());
    if (!_listener || !_wakeUp || !_endUp ||
        ::bind(_listener.get(), address.get(), sizeof address.address) != 0 ||
        ::chmod(_path.c_str(), 0600) != 0 || ::listen(_listener.get(), kBacklog) != 0)
    {
        throw systemFailure("Cannot open the control socket " + _path.string(), errno);
    }
    _thread = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

ControlServer::~ControlServer()
{
    _thread.request_stop();
    raise(_endUp.get());
    _thread.join();
    ::unlink(_path.c_str());
}

std::optional<PendingRequest> ControlServer::next()
{
    const std::lock_guard lock(_mutex);
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t got = ::read(_wakeUp.get(), &count, sizeof count);
    if (_waiting.empty()) {
        return std::nullopt;
    }
    std::optional<PendingRequest> first(std::move(_waiting.front()));
    _waiting.pop_front();
    if (!_waiting.empty()) {
        raise(_wakeUp.get());
    }
    return first;
}

void ControlServer::run(const std::stop_token& stop)
{
    while (!stop.stop_requested()) {
        if (!guarded([this] { turn(); }, _trouble)) {
            _clients.clear();
            // Whatever it is may be there still, and should not cost all of a processor.
            pollfd end{.fd = _endUp.get(), .events = POLLIN, .revents = 0};
            ::poll(&end, 1, static_cast<int>(kTroubleStep.count()));
        }
    }
}

void ControlServer::turn()
{
    std::vector<pollfd> waiting{{.fd = _endUp.get(), .events = POLLIN, .revents = 0},
                                {.fd = _acceptAgain ? -1 : _listener.get(), .events = POLLIN, .revents = 0}};
    for (const Client& client : _clients) {
        waiting.push_back({.fd = client.connection.get(), .events = POLLIN, .revents = 0});
    }
    const int ready = ::poll(waiting.data(), waiting.size(), pollTimeout(Clock::now()));
    if (ready > 0) {
        auto seen = waiting.begin() + 2;
        for (Client& client : _clients) {
            if ((seen++)->revents != 0) {
                listenTo(client);
            }
        }
    }
    letGo(Clock::now());
    if (_acceptAgain || (ready > 0 && waiting[1].revents != 0)) {
        accept();
    }
}

int ControlServer::pollTimeout(Clock::time_point now) const
{
    if (_acceptAgain) {
        return static_cast<int>(kDescriptorStep.count());
    }
    if (_clients.empty()) {
        return -1;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(_clients.front().until - now);
    return static_cast<int>(std::max<long long>(0, left.count()));
}

void ControlServer::accept()
{
    _acceptAgain = false;
    for (;;) {
        FileDescriptor connection(::accept4(_listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!connection) {
            const int error = errno;
            if (error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM) {
                _acceptAgain = true;
            }
            return;
        }
        const std::optional<ucred> peer = peerOf(connection.get());
        if (!peer || !_admission(*peer)) {
            continue;
        }
        if (_clients.size() == kMostClients) {
            _clients.pop_front();
        }
        _clients.push_back(
            {.connection = std::move(connection), .said = {}, .until = Clock::now() + kRequestLimit});
        // It has often said all it has to say, and answering it makes room for the next.
        listenTo(_clients.back());
        if (_clients.back().isOver) {
            _clients.pop_back();
        }
    }
}

void ControlServer::listenTo(Client& client)
{
    char piece[1024];
    while (!client.isOver) {
        const ssize_t got = ::recv(client.connection.get(), piece, sizeof piece, 0);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0 && errno == EAGAIN) {
            return;
        }
        client.said.append(piece, static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        const std::size_t end = client.said.find('\n');
        client.isOver = got <= 0 || end != std::string::npos || client.said.size() >= kLongestLine;
        if (end != std::string::npos) {
            serve(client, client.said.substr(0, end));
        }
    }
}

void ControlServer::serve(Client& client, const std::string& line)
{
    const std::optional<Request> request = Request::fromLine(line);
    if (!request) {
        sendLine(client.connection.get(),
                 Reply{.ok = false, .code = "unknown", .text = "Unknown request."}.toLine());
        return;
    }
    if (request->operation == Operation::Ping) {
        sendLine(client.connection.get(), Reply::success().toLine());
        return;
    }
    const std::lock_guard lock(_mutex);
    _waiting.push_back({.request = *request, .connection = std::move(client.connection)});
    raise(_wakeUp.get());
}

void ControlServer::letGo(Clock::time_point now)
{
    _clients.remove_if([now](const Client& client) { return client.isOver || client.until <= now; });
}

} // namespace ferrobank::drive
