#pragma once

#include <QtCore/QSize>
#include <QtGui/QColor>
#include <QtGui/QWindow>

namespace ferrobank {

/// What the desktop is to know about a window beyond what the toolkit tells it. Main thread. For windows that
/// have been created; without effect where the desktop has no such thing.
class NativeWindow {
public:
    /// The colour in which the desktop shows parts of the window that are not drawn yet, as while it grows.
    static void setBackground(QWindow& window, const QColor& color);

    /// Joins the window to the desktop file of this name, by which lists of windows find its icon and its
    /// name.
    static void setDesktopFile(QWindow& window, const QByteArray& name);

    /// Whether the desktop has a place for windows that are minimised, from which they come back.
    [[nodiscard]] static bool canBeMinimised();

    /// The part of the window's display that a window may take, in device-independent pixels. Where the
    /// desktop does not tell what its panels take, room is left for one.
    [[nodiscard]] static QSize usableArea(const QWindow& window);
};

} // namespace ferrobank
