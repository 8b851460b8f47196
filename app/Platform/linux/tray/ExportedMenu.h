#pragma once

#include "Platform/MenuEntry.h"
#include "Platform/linux/bus/SessionBus.h"

#include <QtCore/QList>

#include <cstdint>
#include <functional>

namespace ferrobank {

struct ExportedMenuCalls;

/// A menu on the session bus for a host to draw: the interface com.canonical.dbusmenu, version 3, as the
/// hosts of status notifier items use it. Main thread. The menu is one level deep.
class ExportedMenu {
public:
    struct Handlers {
        /// The host is about to read or show the menu; setEntries() may be called inside.
        std::function<void()> aboutToShow;

        /// A button or toggle was chosen. Called inside the host's call, so it must only take note.
        std::function<void(int id)> chosen;
    };

    static constexpr auto kPath = "/MenuBar";

    /// `bus` must outlive this object.
    ExportedMenu(SessionBus& bus, Handlers handlers);

    /// Tells the hosts exactly what changed, and nothing when nothing did.
    void setEntries(const QList<MenuEntry>& entries);

    /// Tells the looks of all entries again.
    void repeat();

private:
    friend struct ExportedMenuCalls;

    [[nodiscard]] const MenuEntry* find(int id) const;
    void announceLooks(const QList<int>& ids);
    void announceOrder();

    SessionBus& _bus;
    Handlers _handlers;
    QList<MenuEntry> _entries;
    uint32_t _revision = 1;
    BusSlot _slot;
};

} // namespace ferrobank
