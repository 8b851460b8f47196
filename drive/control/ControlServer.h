#pragma once

#include "control/Message.h"
#include "platform/FileDescriptor.h"

#include <deque>
#include <filesystem>
#include <mutex>
#include <optional>
#include <thread>

namespace ferrobank::drive {

/// A request that waits for the serving loop, with the connection that its answer goes to.
struct PendingRequest {
    Request request;
    FileDescriptor connection;

    void answer(const Reply& reply) const;
};

/// The serving side of the control socket: a thread of its own accepts, checks that the peer is the same
/// user, and answers Ping at once even while the serving loop is busy mounting; the others queue for that
/// loop, which sees `wakeUp()` become readable.
class ControlServer {
public:
    /// Throws Failure when the socket cannot be made. A stale socket file is replaced: the caller holds the
    /// lock.
    explicit ControlServer(const std::filesystem::path& socket);
    ControlServer(const ControlServer&) = delete;
    ControlServer& operator=(const ControlServer&) = delete;
    ~ControlServer();

    [[nodiscard]] int wakeUp() const { return _wakeUp.get(); }

    /// The oldest waiting request, from the serving loop.
    [[nodiscard]] std::optional<PendingRequest> next();

private:
    void run(const std::stop_token& stop);
    void serve(FileDescriptor connection);

    std::filesystem::path _path;
    FileDescriptor _listener;
    FileDescriptor _wakeUp;
    FileDescriptor _endUp;
    std::mutex _mutex;
    std::deque<PendingRequest> _waiting;
    std::jthread _thread;
};

} // namespace ferrobank::drive
