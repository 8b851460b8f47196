#pragma once

#include "control/Message.h"
#include "platform/FileDescriptor.h"

#include <sys/socket.h>

#include <chrono>
#include <deque>
#include <filesystem>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <string>
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
///
/// It listens to many clients at a time, so that none has to wait for one that says nothing; such a one is
/// let go after `kRequestLimit`, or earlier where `kMostClients` are there. While the process has no
/// descriptor left for another client, the clients wait in the socket's queue. What goes wrong on the thread
/// is told to `trouble`, on that thread, and costs the clients of that moment their connection at most.
class ControlServer {
public:
    using Trouble = std::function<void(const std::string& words)>;
    /// Whether a peer may ask at all.
    using Admission = std::function<bool(const ucred& peer)>;

    /// Throws Failure when the socket cannot be made. A stale socket file is replaced: the caller holds the
    /// lock. `admission` is a parameter for tests only.
    ControlServer(const std::filesystem::path& socket, Trouble trouble, Admission admission = isSameUser);
    ControlServer(const ControlServer&) = delete;
    ControlServer& operator=(const ControlServer&) = delete;
    ~ControlServer();

    [[nodiscard]] int wakeUp() const { return _wakeUp.get(); }

    /// The oldest waiting request, from the serving loop.
    [[nodiscard]] std::optional<PendingRequest> next();

    /// The user that this process acts for.
    [[nodiscard]] static bool isSameUser(const ucred& peer);

    static constexpr std::chrono::milliseconds kRequestLimit{1000};
    static constexpr std::size_t kMostClients = 64;

private:
    using Clock = std::chrono::steady_clock;

    struct Client {
        FileDescriptor connection;
        std::string said;
        Clock::time_point until;
        /// The client ended its connection or said too much.
        bool isOver = false;
    };

    void run(const std::stop_token& stop);
    void turn();
    void accept();
    void listenTo(Client& client);
    void serve(Client& client, const std::string& line);
    void letGo(Clock::time_point now);
    [[nodiscard]] int pollTimeout(Clock::time_point now) const;

    std::filesystem::path _path;
    Trouble _trouble;
    Admission _admission;
    FileDescriptor _listener;
    FileDescriptor _wakeUp;
    FileDescriptor _endUp;
    std::mutex _mutex;
    std::deque<PendingRequest> _waiting;
    // Only on the thread; the oldest first.
    std::list<Client> _clients;
    /// No descriptor was left for the client that waits; tried again after a moment.
    bool _acceptAgain = false;
    std::jthread _thread;
};

} // namespace ferrobank::drive
