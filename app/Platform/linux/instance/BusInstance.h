#pragma once

#include "Platform/SingleInstance.h"
#include "Platform/linux/bus/SessionBus.h"

namespace ferrobank {

struct BusInstanceCalls;

/// The running program is the owner of the name org.ferrobank.Ferrobank on the session bus, where it offers
/// org.freedesktop.Application; desktops use the same interface to start programs.
class BusInstance : public SingleInstance {
public:
    static constexpr auto kName = "org.ferrobank.Ferrobank";
    static constexpr auto kPath = "/org/ferrobank/Ferrobank";

    /// `bus` must outlive this object and be attached to the event loop by whoever owns it.
    explicit BusInstance(SessionBus& bus);

    Role claim(const InstanceRequest& request) override;
    void serve(Handler handler) override;

private:
    friend struct BusInstanceCalls;

    [[nodiscard]] Role forward(const InstanceRequest& request);

    SessionBus& _bus;
    Handler _handler;
    BusSlot _object;
};

} // namespace ferrobank
