#include "login/UserManager.h"

#include <systemd/sd-bus.h>
#include <unistd.h>

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace ferrobank::drive {

namespace {

constexpr const char* kService = "org.freedesktop.systemd1";
constexpr const char* kPath = "/org/freedesktop/systemd1";
constexpr const char* kManager = "org.freedesktop.systemd1.Manager";
constexpr std::uint64_t kLimitMicroseconds = 5'000'000;

struct MessageCloser {
    void operator()(sd_bus_message* message) const { ::sd_bus_message_unref(message); }
};

using Message = std::unique_ptr<sd_bus_message, MessageCloser>;

/// The manager's own socket; its address must escape what D-Bus addresses reserve.
std::string privateAddress()
{
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime == nullptr || runtime[0] != '/') {
        return {};
    }
    const std::string path = std::string(runtime) + "/systemd/private";
    if (::access(path.c_str(), W_OK) != 0) {
        return {};
    }
    std::string address = "unix:path=";
    for (const char character : path) {
        const bool plain = std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '/' ||
                           character == '-' || character == '_' || character == '.';
        char escaped[4];
        std::snprintf(escaped, sizeof escaped, "%%%02x", static_cast<unsigned char>(character));
        address += plain ? std::string(1, character) : std::string(escaped);
    }
    return address;
}

sd_bus* openPrivate()
{
    const std::string address = privateAddress();
    sd_bus* bus = nullptr;
    if (address.empty() || ::sd_bus_new(&bus) < 0) {
        return nullptr;
    }
    if (::sd_bus_set_address(bus, address.c_str()) < 0 || ::sd_bus_start(bus) < 0) {
        ::sd_bus_unref(bus);
        return nullptr;
    }
    return bus;
}

Message call(sd_bus* bus, const char* member, const char* types, auto... values)
{
    sd_bus_message* reply = nullptr;
    if (::sd_bus_call_method(bus, kService, kPath, kManager, member, nullptr, &reply, types, values...) < 0) {
        return nullptr;
    }
    return Message(reply);
}

std::string textOf(const Message& message, const char* type)
{
    const char* text = nullptr;
    if (!message || ::sd_bus_message_read(message.get(), type, &text) < 0 || text == nullptr) {
        return {};
    }
    return text;
}

} // namespace

void UserManager::Closer::operator()(sd_bus* bus) const
{
    ::sd_bus_flush_close_unref(bus);
}

std::optional<UserManager> UserManager::connect()
{
    sd_bus* bus = openPrivate();
    if (bus == nullptr && ::sd_bus_open_user(&bus) < 0) {
        return std::nullopt;
    }
    ::sd_bus_set_method_call_timeout(bus, kLimitMicroseconds);
    UserManager manager(bus);
    // A session bus may be there without a manager behind it.
    if (!call(bus, "GetDefaultTarget", "")) {
        return std::nullopt;
    }
    return manager;
}

std::string UserManager::unitFileState(const std::string& unit)
{
    return textOf(call(_bus.get(), "GetUnitFileState", "s", unit.c_str()), "s");
}

std::string UserManager::unitPath(const std::string& unit)
{
    return textOf(call(_bus.get(), "GetUnit", "s", unit.c_str()), "o");
}

std::string UserManager::activeState(const std::string& unit)
{
    const std::string path = unitPath(unit);
    char* text = nullptr;
    if (path.empty() ||
        ::sd_bus_get_property_string(_bus.get(), kService, path.c_str(), "org.freedesktop.systemd1.Unit",
                                     "ActiveState", nullptr, &text) < 0)
    {
        return {};
    }
    std::string state = text;
    std::free(text);
    return state;
}

bool UserManager::start(const std::string& unit)
{
    call(_bus.get(), "ResetFailedUnit", "s", unit.c_str());
    return call(_bus.get(), "StartUnit", "ss", unit.c_str(), "replace") != nullptr;
}

bool UserManager::stop(const std::string& unit)
{
    return call(_bus.get(), "StopUnit", "ss", unit.c_str(), "replace") != nullptr;
}

bool UserManager::disable(const std::string& unit)
{
    return call(_bus.get(), "DisableUnitFiles", "asb", 1, unit.c_str(), 0) != nullptr;
}

bool UserManager::reload()
{
    return call(_bus.get(), "Reload", "") != nullptr;
}

} // namespace ferrobank::drive
