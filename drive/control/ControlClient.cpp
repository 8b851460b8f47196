#include "control/ControlClient.h"

#include "control/LineSocket.h"
#include "control/SocketAddress.h"
#include "platform/Failure.h"

#include <sys/socket.h>
#include <sys/time.h>

namespace ferrobank::drive {

namespace {

/// Waits at most `limit` for room in the server's queue, and as long for each line that is sent later.
FileDescriptor connectTo(const std::filesystem::path& socket, std::chrono::milliseconds limit)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limit);
    const timeval patience{.tv_sec = seconds.count(),
                           .tv_usec = std::chrono::microseconds(limit - seconds).count()};
    try {
        const SocketAddress address = SocketAddress::of(socket);
        FileDescriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (connection &&
            ::setsockopt(connection.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience) == 0 &&
            ::connect(connection.get(), address.get(), sizeof address.address) == 0)
        {
            return connection;
        }
    } catch (const Failure&) {
        // No runtime folder means nobody listens, which the empty result says.
        return {};
    }
    return {};
}

} // namespace

std::optional<Reply> ask(const std::filesystem::path& socket, const Request& request,
                         std::chrono::milliseconds limit)
{
    const FileDescriptor connection = connectTo(socket, limit);
    if (!connection || !sendLine(connection.get(), request.toLine())) {
        return std::nullopt;
    }
    const std::optional<std::string> line = readLine(connection.get(), limit);
    return line ? Reply::fromLine(*line) : std::nullopt;
}

} // namespace ferrobank::drive
