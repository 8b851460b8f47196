#include "Platform/NativeWindow.h"

#include <QtCore/QStringList>
#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtGui/qguiapplication_platform.h>

#include <xcb/xcb.h>

#include <algorithm>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

/// On Wayland programs do not learn what panels take. The thickest of the usual ones, GNOME's and Plasma's,
/// are 32 and 44 high.
constexpr int kPanel = 48;

xcb_connection_t* display()
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 == nullptr ? nullptr : x11->connection();
}

bool onWayland()
{
    return QGuiApplication::platformName().startsWith("wayland"_L1);
}

} // namespace

void NativeWindow::setBackground(QWindow& window, const QColor& color)
{
    if (xcb_connection_t* connection = display(); connection != nullptr && window.handle() != nullptr) {
        const uint32_t pixel = color.rgba();
        xcb_change_window_attributes(connection, static_cast<xcb_window_t>(window.winId()), XCB_CW_BACK_PIXEL,
                                     &pixel);
        xcb_flush(connection);
    }
}

void NativeWindow::setDesktopFile(QWindow& window, const QByteArray& name)
{
    if (xcb_connection_t* connection = display(); connection != nullptr && window.handle() != nullptr) {
        // Instance and class, each with its end.
        const QByteArray both = name + '\0' + name + '\0';
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                            XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8, static_cast<uint32_t>(both.size()),
                            both.constData());
        xcb_flush(connection);
    }
}

bool NativeWindow::canBeMinimised()
{
    // Compositors of the tiling kind have no such place, and a window cannot learn that from them.
    static const QStringList kWithout{u"sway"_s, u"Hyprland"_s, u"river"_s, u"niri"_s, u"i3"_s};
    const QStringList desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':');
    const bool named = std::ranges::any_of(
        kWithout, [&desktops](const QString& name) { return desktops.contains(name, Qt::CaseInsensitive); });
    return !named && !(onWayland() && qEnvironmentVariableIsSet("SWAYSOCK"));
}

QSize NativeWindow::usableArea(const QWindow& window)
{
    const QScreen* screen = window.screen();
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    if (screen == nullptr) {
        return {};
    }
    QSize area = screen->availableSize();
    if (onWayland() && screen->availableGeometry() == screen->geometry()) {
        area.rheight() -= kPanel;
    }
    return area;
}

} // namespace ferrobank
