#pragma once

#include "Platform/MenuEntry.h"

#include <QtCore/QList>

#include <systemd/sd-bus.h>

#include <string>
#include <vector>

namespace ferrobank {

/// The parts that messages of com.canonical.dbusmenu are made of. What cannot be appended leaves the message
/// unfit to be sent, and sending it then fails.

/// The invisible entry above all others.
inline constexpr int kMenuRoot = 0;

/// Names of the properties that a caller wants; none means all.
using WantedProperties = std::vector<std::string>;

/// In labels one underscore marks a mnemonic; two are one underscore.
[[nodiscard]] std::string menuLabel(const MenuEntry& entry);

[[nodiscard]] bool isChoosable(const MenuEntry& entry);

/// a{sv} for an entry, or for the root when it is null. Properties with their default value are left out, as
/// the interface asks.
void appendProperties(sd_bus_message* message, const MenuEntry* entry, const WantedProperties& wanted);

/// One node of a layout, (ia{sv}av), with these children.
void appendNode(sd_bus_message* message, int id, const MenuEntry* entry, const WantedProperties& wanted,
                const QList<MenuEntry>& children);

/// as; false when the message holds something else.
[[nodiscard]] bool readWanted(sd_bus_message* message, WantedProperties& wanted);

/// ai; false when the message holds something else.
[[nodiscard]] bool readIds(sd_bus_message* message, std::vector<int>& ids);

} // namespace ferrobank
