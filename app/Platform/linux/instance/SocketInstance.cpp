#include "Platform/linux/instance/SocketInstance.h"

#include <QtCore/QList>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <utility>

namespace ferrobank {

namespace {

using namespace std::chrono_literals;

constexpr auto kAnswerTimeout = 20s;

/// The winner of the lock listens a moment after it has the lock.
constexpr auto kListeningTimeout = 2s;
constexpr auto kListeningPause = 10ms;
constexpr qsizetype kLongestRequest = 4096;

bool addressOf(const std::filesystem::path& file, sockaddr_un& address)
{
    address = {};
    address.sun_family = AF_UNIX;
    const std::string& text = file.native();
    if (text.size() >= sizeof(address.sun_path)) {
        return false;
    }
    std::memcpy(address.sun_path, text.c_str(), text.size() + 1);
    return true;
}

bool sameUser(int socket)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == getuid();
}

bool privateToUser(const std::filesystem::path& folder)
{
    struct stat info{};
    return lstat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == getuid() &&
           (info.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

} // namespace

SocketInstance::SocketInstance(std::filesystem::path folder)
    : _hasFolder(folder.is_absolute()),
      _socketFile(folder / "org.ferrobank.Ferrobank.socket"),
      _lockFile(folder / "org.ferrobank.Ferrobank.lock")
{}

std::filesystem::path SocketInstance::runtimeFolder()
{
    if (const char* set = std::getenv("XDG_RUNTIME_DIR"); set != nullptr && *set == '/') {
        return set;
    }
    std::filesystem::path folder = "/tmp/ferrobank-" + std::to_string(getuid());
    mkdir(folder.c_str(), S_IRWXU);
    return privateToUser(folder) ? folder : std::filesystem::path();
}

SingleInstance::Role SocketInstance::claim(const InstanceRequest& request)
{
    if (!_hasFolder) {
        return Role::First; // the names alone would be files in whatever folder we were started in
    }
    _lock = Descriptor(open(_lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    if (_lock.isOpen() && flock(_lock.number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return forward(request);
    }
    // Where nothing can be locked or listened on, nobody can find us; we run all the same.
    if (!_lock.isOpen() || !listenOnSocket()) {
        _listener = Descriptor();
    }
    return Role::First;
}

void SocketInstance::serve(Handler handler)
{
    _handler = std::move(handler);
    if (!_listener.isOpen()) {
        return;
    }
    _acceptable = std::make_unique<QSocketNotifier>(_listener.number(), QSocketNotifier::Read);
    QObject::connect(_acceptable.get(), &QSocketNotifier::activated, _acceptable.get(), [this] { accept(); });
}

bool SocketInstance::listenOnSocket()
{
    sockaddr_un address{};
    _listener = Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!_listener.isOpen() || !addressOf(_socketFile, address)) {
        return false;
    }
    // The lock is ours, so a socket that is there is a leftover.
    unlink(_socketFile.c_str());
    return bind(_listener.number(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
           listen(_listener.number(), SOMAXCONN) == 0;
}

SingleInstance::Role SocketInstance::forward(const InstanceRequest& request) const
{
    sockaddr_un address{};
    const Descriptor connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!connection.isOpen() || !addressOf(_socketFile, address)) {
        return Role::Unanswered;
    }
    const auto end = std::chrono::steady_clock::now() + kListeningTimeout;
    while (connect(connection.number(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        if (std::chrono::steady_clock::now() > end) {
            return Role::Unanswered;
        }
        std::this_thread::sleep_for(kListeningPause);
    }
    const timeval timeout{std::chrono::seconds(kAnswerTimeout).count(), 0};
    setsockopt(connection.number(), SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    const QByteArray line = (request.action + u'\t' + request.activationToken).toUtf8() + '\n';
    if (send(connection.number(), line.constData(), static_cast<size_t>(line.size()), MSG_NOSIGNAL) !=
        line.size())
    {
        return Role::Unanswered;
    }
    char answer[16] = {};
    const ssize_t got = recv(connection.number(), answer, sizeof answer - 1, 0);
    return got > 0 && std::strcmp(answer, "done\n") == 0 ? Role::Forwarded : Role::Unanswered;
}

void SocketInstance::accept()
{
    Descriptor socket(accept4(_listener.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket.isOpen() || !sameUser(socket.number())) {
        return;
    }
    const int number = socket.number();
    auto readable = std::make_unique<QSocketNotifier>(number, QSocketNotifier::Read);
    QObject::connect(
        readable.get(), &QSocketNotifier::activated, readable.get(), [this, number] { read(number); },
        Qt::QueuedConnection);
    _callers.emplace(number, Caller{std::move(socket), std::move(readable), {}});
}

void SocketInstance::read(int number)
{
    const auto found = _callers.find(number);
    if (found == _callers.end()) {
        return;
    }
    Caller& caller = found->second;
    char piece[512];
    const ssize_t got = recv(number, piece, sizeof piece, 0);
    if (got > 0) {
        caller.line.append(piece, got);
    }
    const qsizetype end = caller.line.indexOf('\n');
    if (end >= 0) {
        const QList<QByteArray> parts = caller.line.first(end).split('\t');
        const InstanceRequest request{QString::fromUtf8(parts.value(0)), QString::fromUtf8(parts.value(1))};
        const char* answer = _handler(request) ? "done\n" : "unknown\n";
        // A caller that is gone already does not need the answer.
        send(number, answer, std::strlen(answer), MSG_NOSIGNAL);
    }
    const bool again = got < 0 && (errno == EAGAIN || errno == EINTR);
    if (end >= 0 || caller.line.size() > kLongestRequest || (got <= 0 && !again)) {
        caller.readable->setEnabled(false);
        caller.readable.release()->deleteLater();
        _callers.erase(number);
    }
}

} // namespace ferrobank
