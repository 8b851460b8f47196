#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <optional>
#include <string>

namespace ferrobank::drive {

/// Owning handles of sd-bus.
struct BusCloser {
    void operator()(sd_bus* bus) const { ::sd_bus_flush_close_unref(bus); }
};

struct BusMessageCloser {
    void operator()(sd_bus_message* message) const { ::sd_bus_message_unref(message); }
};

using Bus = std::unique_ptr<sd_bus, BusCloser>;
using BusMessage = std::unique_ptr<sd_bus_message, BusMessageCloser>;

/// A refusal as the other side worded it.
struct BusError {
    /// "org.freedesktop.UDisks2.Error.NotAuthorized"
    std::string name;
    std::string text;

    [[nodiscard]] bool isOneOf(const char* prefix) const { return name.starts_with(prefix); }
};

/// The answer to a call, or why there is none.
struct BusReply {
    BusMessage message;
    std::optional<BusError> error;
};

/// The system bus, or null where there is none.
[[nodiscard]] Bus openSystemBus();

/// Sends a call and waits at most `seconds`.
[[nodiscard]] BusReply callAndWait(const Bus& bus, const BusMessage& call, unsigned seconds);

/// Whether somebody has the name or would be started for it.
[[nodiscard]] bool isNameAvailable(const Bus& bus, const std::string& name);

} // namespace ferrobank::drive
