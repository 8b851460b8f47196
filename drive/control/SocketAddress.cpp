#include "control/SocketAddress.h"

#include "platform/Failure.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdio>

namespace ferrobank::drive {

SocketAddress SocketAddress::of(const std::filesystem::path& socket)
{
    SocketAddress made;
    made.folder.reset(::open(socket.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!made.folder) {
        throw systemFailure("Cannot open " + socket.parent_path().string(), errno);
    }
    made.address.sun_family = AF_UNIX;
    std::snprintf(made.address.sun_path, sizeof made.address.sun_path, "/proc/self/fd/%d/%s",
                  made.folder.get(), socket.filename().c_str());
    return made;
}

} // namespace ferrobank::drive
