#include "Ferrobank/Components/WindowFit.h"

#include <QtGui/QScreen>

#include <algorithm>

namespace ferrobank {

namespace {

int start(int from, int extent, int wanted, int begin, int end)
{
    const int growth = std::max(0, wanted - extent);
    const int back = std::clamp(from + wanted - end, 0, growth);
    return std::max(from - back, std::min(from, begin));
}

} // namespace

QRect WindowFit::place(const QRect& window, const QSize& wanted, const QRect& available)
{
    const QPoint corner(
        start(window.x(), window.width(), wanted.width(), available.x(), available.x() + available.width()),
        start(window.y(), window.height(), wanted.height(), available.y(),
              available.y() + available.height()));
    return {corner, wanted};
}

void WindowFit::apply(QWindow* window, int width, int height)
{
    const QSize wanted(width, height);
    // The window manager holds a window within its limits, so they make way before the size changes.
    window->setMinimumSize(window->minimumSize().boundedTo(wanted));
    window->setMaximumSize(window->size().expandedTo(wanted));
    const QRect place = WindowFit::place(window->geometry(), wanted, window->screen()->availableGeometry());
    // A place of our own is asked for only when it is needed: a new window's is for the window manager to
    // find.
    if (window->isVisible() && place.topLeft() != window->position()) {
        window->setGeometry(place);
    } else {
        window->resize(wanted);
    }
    window->setMinimumSize(wanted);
    window->setMaximumSize(wanted);
}

} // namespace ferrobank
