#include "control/LineSocket.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <string_view>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kLongestLine = 64 * 1024;

} // namespace

std::optional<std::string> readLine(int socket, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    std::string line;
    while (line.size() < kLongestLine) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd waiting{.fd = socket, .events = POLLIN, .revents = 0};
        if (left.count() <= 0) {
            return std::nullopt;
        }
        if (::poll(&waiting, 1, static_cast<int>(left.count())) <= 0) {
            continue;
        }
        char piece[1024];
        const ssize_t got = ::recv(socket, piece, sizeof piece, MSG_DONTWAIT);
        if (got < 0 && (errno == EINTR || errno == EAGAIN)) {
            continue;
        }
        if (got <= 0) {
            return std::nullopt;
        }
        line.append(piece, static_cast<std::size_t>(got));
        if (const std::size_t end = line.find('\n'); end != std::string::npos) {
            line.resize(end);
            return line;
        }
    }
    return std::nullopt;
}

bool sendLine(int socket, const std::string& line)
{
    std::string_view rest = line;
    while (!rest.empty()) {
        const ssize_t put = ::send(socket, rest.data(), rest.size(), MSG_NOSIGNAL);
        if (put < 0 && errno == EINTR) {
            continue;
        }
        if (put <= 0) {
            return false;
        }
        rest.remove_prefix(static_cast<std::size_t>(put));
    }
    return true;
}

} // namespace ferrobank::drive
