#include "control/ControlClient.h"

#include "control/LineSocket.h"
#include "control/SocketAddress.h"
#include "platform/Failure.h"

#include <sys/socket.h>

namespace ferrobank::drive {

namespace {

FileDescriptor connectTo(const std::filesystem::path& socket)
{
    try {
        const SocketAddress address = SocketAddress::of(socket);
        FileDescriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (connection && ::connect(connection.get(), address.get(), sizeof address.address) == 0) {
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
    const FileDescriptor connection = connectTo(socket);
    if (!connection || !sendLine(connection.get(), request.toLine())) {
        return std::nullopt;
    }
    const std::optional<std::string> line = readLine(connection.get(), limit);
    return line ? Reply::fromLine(*line) : std::nullopt;
}

} // namespace ferrobank::drive
