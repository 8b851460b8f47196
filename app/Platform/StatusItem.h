#pragma once

#include "Platform/MenuEntry.h"

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QString>

namespace ferrobank {

/// What the item says without being opened. Plain value.
struct StatusItemFace {
    QString title;   ///< for lists of items and screen readers
    QString toolTip; ///< one or more lines under the title
    bool needsAttention = false;

    friend bool operator==(const StatusItemFace&, const StatusItemFace&) = default;
};

/// The program's icon in the desktop's tray, with its menu. Main thread.
///
/// It shows up whenever the desktop has a place for it, however early or late that comes and however often it
/// goes; without one it is simply not seen. Setting an equal face or menu does nothing at all.
class StatusItem : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    virtual void setFace(const StatusItemFace& face) = 0;
    virtual void setMenu(const QList<MenuEntry>& entries) = 0;

    /// Tells the desktop about the present menu again, although nothing changed: some desktops flip a toggle
    /// by themselves when it is chosen.
    virtual void repeatMenu() = 0;

    /// Whether the desktop has a place for it at the moment, as far as one can know.
    [[nodiscard]] virtual bool isSeen() const { return true; }

Q_SIGNALS:
    /// The icon itself was clicked. The token lets a window take the focus on Wayland; empty where there is
    /// none.
    void activated(const QString& activationToken);

    /// An entry was chosen.
    void chosen(int entry, const QString& activationToken);

    /// The menu is about to be read or shown; what setMenu() is given during the signal is what will be seen.
    void aboutToShowMenu();
};

} // namespace ferrobank
