#include "Platform/linux/updates/worker/Display.h"

#include "Platform/linux/Descriptor.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>

namespace ferrobank::updates {
namespace {

std::string variable(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? value : "";
}

/// `name` is a path, or begins with NUL for the kind without a file.
bool canConnect(const std::string& name)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.size() >= sizeof address.sun_path)
        return false;
    std::ranges::copy(name, address.sun_path);
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    return socket.isOpen() &&
           ::connect(socket.number(), reinterpret_cast<const sockaddr*>(&address), length) == 0;
}

bool waylandAnswers()
{
    const std::string name = variable("WAYLAND_DISPLAY");
    if (name.empty())
        return false;
    return canConnect(name.starts_with('/') ? name : variable("XDG_RUNTIME_DIR") + "/" + name);
}

bool xAnswers()
{
    const std::string name = variable("DISPLAY");
    const auto colon = name.rfind(':');
    if (colon == std::string::npos)
        return false;
    if (colon > 0 && name.substr(0, colon) != "unix")
        return true;
    const std::string number = name.substr(colon + 1, name.find('.', colon) - colon - 1);
    const std::string path = "/tmp/.X11-unix/X" + number;
    return canConnect(path) || canConnect(std::string(1, '\0') + path);
}

} // namespace

bool displayAnswers()
{
    const std::string platform = variable("QT_QPA_PLATFORM");
    const bool isWindowless =
        !platform.empty() && !platform.starts_with("xcb") && !platform.starts_with("wayland");
    return isWindowless || waylandAnswers() || xAnswers();
}

} // namespace ferrobank::updates
