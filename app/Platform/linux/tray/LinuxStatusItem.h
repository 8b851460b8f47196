#pragma once

#include "Platform/StatusItem.h"
#include "Platform/linux/tray/ClassicTrayItem.h"
#include "Platform/linux/tray/StatusNotifierItem.h"

#include <QtCore/QTimer>

#include <memory>

namespace ferrobank {

/// The tray icon on whatever panel there is: an item on the session bus from the start, and an icon of the
/// older kind as long as no panel on the bus has taken the item. Main thread.
class LinuxStatusItem : public StatusItem {
    Q_OBJECT

public:
    LinuxStatusItem(SessionBus& bus, TrayIcon icon);

    void setFace(const StatusItemFace& face) override;
    void setMenu(const QList<MenuEntry>& entries) override;
    void repeatMenu() override;
    [[nodiscard]] bool isSeen() const override;

private:
    void passOn(StatusItem& item);
    void showClassic();

    TrayIcon _icon;
    StatusItemFace _face;
    QList<MenuEntry> _entries;
    StatusNotifierItem _onBus;
    bool _taken = false;
    QTimer _patience;
    std::unique_ptr<ClassicTrayItem> _classic;
};

} // namespace ferrobank
