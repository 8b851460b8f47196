#include "Platform/linux/updates/worker/Metered.h"

#include "Platform/linux/bus/BusReference.h"

#include <cstdint>

namespace ferrobank::updates {
namespace {

constexpr std::uint64_t kBusLimit = 2'000'000; ///< microseconds
constexpr std::uint32_t kYes = 1;
constexpr std::uint32_t kGuessYes = 3;

} // namespace

bool isConnectionMetered()
{
    sd_bus* opened = nullptr;
    if (sd_bus_open_system(&opened) < 0)
        return false;
    const FlushedBus bus(opened);
    sd_bus_set_method_call_timeout(bus.get(), kBusLimit);
    std::uint32_t metered = 0;
    sd_bus_get_property_trivial(bus.get(), "org.freedesktop.NetworkManager",
                                "/org/freedesktop/NetworkManager", "org.freedesktop.NetworkManager",
                                "Metered", nullptr, 'u', &metered);
    return metered == kYes || metered == kGuessYes;
}

} // namespace ferrobank::updates
