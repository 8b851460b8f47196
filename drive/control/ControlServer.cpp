#include "control/ControlServer.h"

#include "control/LineSocket.h"
#include "control/SocketAddress.h"
#include "platform/Failure.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr std::chrono::milliseconds kRequestLimit{1000};
constexpr int kBacklog = 16;

void raise(int eventDescriptor)
{
    const std::uint64_t one = 1;
    // The counter cannot overflow with one request at a time; a failed write means it is raised already.
    [[maybe_unused]] const ssize_t put = ::write(eventDescriptor, &one, sizeof one);
}

bool isSameUser(int connection)
{
    ucred peer{};
    socklen_t length = sizeof peer;
    return ::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 && peer.uid == ::geteuid();
}

} // namespace

void PendingRequest::answer(const Reply& reply) const
{
    sendLine(connection.get(), reply.toLine());
}

ControlServer::ControlServer(const std::filesystem::path& socket)
    : _path(socket),
      _listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)),
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
        pollfd waiting[2] = {{.fd = _listener.get(), .events = POLLIN, .revents = 0},
                             {.fd = _endUp.get(), .events = POLLIN, .revents = 0}};
        if (::poll(waiting, 2, -1) <= 0 || waiting[0].revents == 0) {
            continue;
        }
        FileDescriptor connection(::accept4(_listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (connection && isSameUser(connection.get())) {
            serve(std::move(connection));
        }
    }
}

void ControlServer::serve(FileDescriptor connection)
{
    const std::optional<std::string> line = readLine(connection.get(), kRequestLimit);
    const std::optional<Request> request = line ? Request::fromLine(*line) : std::nullopt;
    if (!request) {
        sendLine(connection.get(),
                 Reply{.ok = false, .code = "unknown", .text = "Unknown request."}.toLine());
        return;
    }
    if (request->operation == Operation::Ping) {
        sendLine(connection.get(), Reply::success().toLine());
        return;
    }
    const std::lock_guard lock(_mutex);
    _waiting.push_back({.request = *request, .connection = std::move(connection)});
    raise(_wakeUp.get());
}

} // namespace ferrobank::drive
