#pragma once

#include <systemd/sd-bus.h>

#include <memory>

namespace ferrobank {

template <typename Thing, Thing* (*release)(Thing*)>
struct BusRelease {
    void operator()(Thing* thing) const { release(thing); }
};

/// One reference to an sd-bus object, given back at the end of its scope.
using BusMessage = std::unique_ptr<sd_bus_message, BusRelease<sd_bus_message, sd_bus_message_unref>>;
using BusSlot = std::unique_ptr<sd_bus_slot, BusRelease<sd_bus_slot, sd_bus_slot_unref>>;

/// A connection of one's own. At the end of its scope what was sent still goes out.
using FlushedBus = std::unique_ptr<sd_bus, BusRelease<sd_bus, sd_bus_flush_close_unref>>;

/// The same, but what was not sent yet is dropped: its end never waits.
using DroppedBus = std::unique_ptr<sd_bus, BusRelease<sd_bus, sd_bus_close_unref>>;

} // namespace ferrobank
