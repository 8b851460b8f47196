#pragma once

#include "Platform/StatusItem.h"
#include "Platform/linux/tray/MenuMirror.h"
#include "Platform/linux/tray/TrayIcon.h"

#include <QtWidgets/QSystemTrayIcon>

namespace ferrobank {

/// The tray icon for panels of the older kind, which embed a small X11 window. The toolkit follows such
/// panels as they come and go. Main thread; to be made only when the session bus has no place for an item,
/// since the toolkit decides once which kind it makes.
class ClassicTrayItem : public StatusItem {
    Q_OBJECT

public:
    explicit ClassicTrayItem(TrayIcon icon);

    void setFace(const StatusItemFace& face) override;
    void setMenu(const QList<MenuEntry>& entries) override;
    void repeatMenu() override;
    [[nodiscard]] bool isSeen() const override;

private:
    void showIcon();

    TrayIcon _icon;
    StatusItemFace _face;
    MenuMirror _menu;
    QSystemTrayIcon _trayIcon;
};

} // namespace ferrobank
