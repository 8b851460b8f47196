#include "Platform/linux/updates/worker/OwnScope.h"

#include "Platform/linux/bus/BusReference.h"

#include <unistd.h>

#include <cstdint>
#include <string>

namespace ferrobank::updates {
namespace {

constexpr std::uint64_t kBusLimit = 2'000'000; ///< microseconds

} // namespace

void moveToOwnScope()
{
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0)
        return;
    const FlushedBus bus(opened);
    sd_bus_set_method_call_timeout(bus.get(), kBusLimit);

    const auto process = static_cast<std::uint32_t>(::getpid());
    const std::string name = "app-org.ferrobank.Ferrobank-" + std::to_string(process) + ".scope";
    sd_bus_message* made = nullptr;
    if (sd_bus_message_new_method_call(bus.get(), &made, "org.freedesktop.systemd1",
                                       "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager",
                                       "StartTransientUnit") < 0)
        return;
    const BusMessage call(made);
    const bool isComplete =
        sd_bus_message_append(call.get(), "ssa(sv)a(sa(sv))", name.c_str(), "fail", 2, "PIDs", "au", 1,
                              process, "CollectMode", "s", "inactive-or-failed", 0) >= 0;
    // No answer is needed: where it is refused the process goes on in the scope it has.
    if (isComplete)
        sd_bus_call(bus.get(), call.get(), 0, nullptr, nullptr);
}

} // namespace ferrobank::updates
