#pragma once

#include <QtCore/QObject>
#include <QtCore/QRect>
#include <QtCore/QSize>
#include <QtGui/QWindow>
#include <QtQml/qqmlregistration.h>

namespace ferrobank {

/// Gives a window that cannot be resized by hand the size of its content. Main thread; one object an engine,
/// without state. Device-independent pixels.
class WindowFit : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    /// Where a window of the new size belongs: where it is, but never further beyond the far edges of the
    /// display than it was before it grew. What somebody pushed over an edge by hand stays there, and the
    /// near edges win.
    [[nodiscard]] static QRect place(const QRect& window, const QSize& wanted, const QRect& available);

    /// Where the window manager decides on places, as on Wayland, only the size is heard.
    Q_INVOKABLE static void apply(QWindow* window, int width, int height);
};

} // namespace ferrobank
