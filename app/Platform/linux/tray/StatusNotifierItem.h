#pragma once

#include "Platform/StatusItem.h"
#include "Platform/linux/bus/SessionBus.h"
#include "Platform/linux/tray/ExportedMenu.h"
#include "Platform/linux/tray/TrayIcon.h"

#include <QtCore/QString>

#include <string>

namespace ferrobank {

struct StatusNotifierItemCalls;

/// The tray icon as an item of the interface org.kde.StatusNotifierItem on the session bus, which today's
/// panels draw. Registers itself with the watcher now and each time a watcher appears, so that it does not
/// matter when, or how often, the panel starts. Main thread.
class StatusNotifierItem : public StatusItem {
    Q_OBJECT

public:
    static constexpr auto kPath = "/StatusNotifierItem";

    /// `bus` must outlive this object. Hosts are answered once the bus is attached to the event loop.
    StatusNotifierItem(SessionBus& bus, TrayIcon icon);

    void setFace(const StatusItemFace& face) override;
    void setMenu(const QList<MenuEntry>& entries) override;
    void repeatMenu() override;

Q_SIGNALS:
    /// Whether a panel that draws items has taken this one. False at first.
    void takenChanged(bool taken);

private:
    friend struct StatusNotifierItemCalls;

    void registerWithWatcher();
    void askForHost();
    void setTaken(bool taken);
    void tell(const char* signal);
    [[nodiscard]] QString takeActivationToken();
    [[nodiscard]] TrayIcon::Shape shape() const;

    SessionBus& _bus;
    TrayIcon _icon;
    StatusItemFace _face;
    QString _activationToken; ///< the host hands it over just before the click that it belongs to
    std::string _name;
    bool _taken = false;
    BusSlot _object;
    BusSlot _watcherChanges;
    BusSlot _hostArrivals;
    BusSlot _registration;
    BusSlot _hostQuestion;
    ExportedMenu _menu;
};

} // namespace ferrobank
