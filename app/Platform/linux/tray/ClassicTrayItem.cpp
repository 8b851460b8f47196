#include "Platform/linux/tray/ClassicTrayItem.h"

#include <QtGui/QPixmap>

#include <utility>

namespace ferrobank {

ClassicTrayItem::ClassicTrayItem(TrayIcon icon) : _icon(std::move(icon))
{
    connect(&_menu, &MenuMirror::chosen, this, [this](int entry) { Q_EMIT chosen(entry, QString()); });
    connect(&_menu.menu(), &QMenu::aboutToShow, this, &StatusItem::aboutToShowMenu);
    connect(&_trayIcon, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason != QSystemTrayIcon::Context) {
            Q_EMIT activated(QString());
        }
    });
    _trayIcon.setContextMenu(&_menu.menu());
    showIcon();
    _trayIcon.show();
}

void ClassicTrayItem::setFace(const StatusItemFace& face)
{
    if (face == _face) {
        return;
    }
    const StatusItemFace before = std::exchange(_face, face);
    const QStringList lines{face.title, face.toolTip};
    _trayIcon.setToolTip(lines.join(u'\n').trimmed());
    if (before.needsAttention != face.needsAttention) {
        showIcon();
    }
}

void ClassicTrayItem::setMenu(const QList<MenuEntry>& entries)
{
    _menu.setEntries(entries);
}

bool ClassicTrayItem::isSeen() const
{
    return QSystemTrayIcon::isSystemTrayAvailable();
}

void ClassicTrayItem::repeatMenu()
{
    _menu.repeat();
}

void ClassicTrayItem::showIcon()
{
    _trayIcon.setIcon(
        _icon.icon(_face.needsAttention ? TrayIcon::Shape::NeedsAttention : TrayIcon::Shape::Normal));
}

} // namespace ferrobank
