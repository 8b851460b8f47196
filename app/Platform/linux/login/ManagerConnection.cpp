#include "Platform/linux/login/ManagerConnection.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

namespace ferrobank {

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kService = "org.freedesktop.systemd1";
constexpr const char* kObject = "/org/freedesktop/systemd1";

std::uint64_t untilThen(Clock::time_point deadline)
{
    const auto rest = std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now());
    return rest.count() > 0 ? static_cast<std::uint64_t>(rest.count()) : 0;
}

/// The folder of the session or, without a word about it in the environment, of the account's session.
std::string runtimeFolder()
{
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    return folder != nullptr && *folder == '/' ? folder : "/run/user/" + std::to_string(geteuid());
}

/// As the D-Bus Specification wants values in addresses, "Server Addresses".
std::string escapedForAddress(std::string_view path)
{
    constexpr std::string_view kPlain =
        "-_/.\\*0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr std::string_view kHexDigits = "0123456789abcdef";
    std::string result;
    for (const char character : path) {
        if (kPlain.find(character) != std::string_view::npos) {
            result += character;
        } else {
            const auto value = static_cast<unsigned char>(character);
            result += '%';
            result += kHexDigits[value >> 4U];
            result += kHexDigits[value & 0xfU];
        }
    }
    return result;
}

} // namespace

ManagerConnection::ManagerConnection(std::chrono::microseconds limit)
{
    _error = open();
    if (_error == 0) {
        _error = awaitGreeting(limit);
    }
}

int ManagerConnection::open()
{
    sd_bus* bus = nullptr;
    int result = sd_bus_open_user(&bus);
    _bus.reset(bus);
    if (result >= 0) {
        return 0;
    }
    const std::string address = "unix:path=" + escapedForAddress(runtimeFolder() + "/systemd/private");
    result = sd_bus_new(&bus);
    _bus.reset(bus);
    if (result >= 0) {
        result = sd_bus_set_address(bus, address.c_str());
    }
    if (result >= 0) {
        result = sd_bus_start(bus);
    }
    return result < 0 ? -result : 0;
}

int ManagerConnection::awaitGreeting(std::chrono::microseconds limit)
{
    // The library would wait for a minute and a half for somebody who does not greet.
    const Clock::time_point deadline = Clock::now() + limit;
    while (sd_bus_is_ready(_bus.get()) == 0) {
        int result = sd_bus_process(_bus.get(), nullptr);
        if (result == 0) {
            const std::uint64_t rest = untilThen(deadline);
            result = rest == 0 ? -ETIMEDOUT : sd_bus_wait(_bus.get(), rest);
        }
        if (result < 0 && result != -EINTR) {
            return -result;
        }
    }
    return sd_bus_is_ready(_bus.get()) > 0 ? 0 : ENOTCONN;
}

BusMessage ManagerConnection::newCall(const char* interface, const char* member)
{
    sd_bus_message* message = nullptr;
    if (sd_bus_message_new_method_call(_bus.get(), &message, kService, kObject, interface, member) < 0) {
        throw std::bad_alloc();
    }
    sd_bus_message_set_auto_start(message, 0);
    return BusMessage(message);
}

ManagerConnection::Outcome ManagerConnection::call(const BusMessage& message, std::chrono::microseconds limit)
{
    sd_bus_error error{};
    sd_bus_message* reply = nullptr;
    Outcome outcome;
    const int result =
        sd_bus_call(_bus.get(), message.get(), static_cast<std::uint64_t>(limit.count()), &error, &reply);
    outcome.reply.reset(reply);
    if (result < 0) {
        outcome.error = -result;
        outcome.errorName = error.name != nullptr ? error.name : "";
        outcome.errorText = error.message != nullptr ? error.message : std::strerror(-result);
    }
    sd_bus_error_free(&error);
    return outcome;
}

} // namespace ferrobank
