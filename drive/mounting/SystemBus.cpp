#include "mounting/SystemBus.h"

#include <cstdint>
#include <cstring>

namespace ferrobank::drive {

namespace {

constexpr const char* kDaemon = "org.freedesktop.DBus";
constexpr const char* kDaemonPath = "/org/freedesktop/DBus";
constexpr std::uint64_t kMicroseconds = 1'000'000;

bool listHolds(const Bus& bus, const char* member, const std::string& name)
{
    sd_bus_message* answer = nullptr;
    if (::sd_bus_call_method(bus.get(), kDaemon, kDaemonPath, kDaemon, member, nullptr, &answer, "") < 0) {
        return false;
    }
    const BusMessage message(answer);
    if (::sd_bus_message_enter_container(message.get(), 'a', "s") < 0) {
        return false;
    }
    const char* entry = nullptr;
    while (::sd_bus_message_read_basic(message.get(), 's', &entry) > 0) {
        if (name == entry) {
            return true;
        }
    }
    return false;
}

} // namespace

Bus openSystemBus()
{
    sd_bus* bus = nullptr;
    return ::sd_bus_open_system(&bus) < 0 ? Bus() : Bus(bus);
}

BusReply callAndWait(const Bus& bus, const BusMessage& call, unsigned seconds)
{
    sd_bus_message* answer = nullptr;
    sd_bus_error error{};
    const int result = ::sd_bus_call(bus.get(), call.get(), seconds * kMicroseconds, &error, &answer);
    BusReply reply{.message = BusMessage(answer), .error = std::nullopt};
    if (result < 0) {
        reply.error = BusError{.name = error.name != nullptr ? error.name : "",
                               .text = error.message != nullptr ? error.message : std::strerror(-result)};
    }
    ::sd_bus_error_free(&error);
    return reply;
}

bool isNameAvailable(const Bus& bus, const std::string& name)
{
    return bus && (listHolds(bus, "ListNames", name) || listHolds(bus, "ListActivatableNames", name));
}

} // namespace ferrobank::drive
