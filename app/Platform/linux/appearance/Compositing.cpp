#include "Platform/DesktopAppearance.h"

#include <QtGui/QGuiApplication>
#include <QtGui/qguiapplication_platform.h>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

template <typename Reply>
using ReplyPointer = std::unique_ptr<Reply, decltype(&std::free)>;

// A compositing manager owns the selection _NET_WM_CM_S0 (of the first screen, the only one in use today).
bool hasCompositingManager(xcb_connection_t* connection)
{
    constexpr std::string_view kSelection = "_NET_WM_CM_S0";
    const auto atomCookie =
        xcb_intern_atom(connection, 1, static_cast<uint16_t>(kSelection.size()), kSelection.data());
    const ReplyPointer<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(connection, atomCookie, nullptr),
                                                     &std::free);
    if (!atom || atom->atom == XCB_ATOM_NONE) {
        return false;
    }
    const auto ownerCookie = xcb_get_selection_owner(connection, atom->atom);
    const ReplyPointer<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, ownerCookie, nullptr), &std::free);
    return owner && owner->owner != XCB_WINDOW_NONE;
}

bool onWayland()
{
    return QGuiApplication::platformName().startsWith("wayland"_L1);
}

} // namespace

bool raisingNeedsLeave()
{
    return onWayland();
}

bool windowsAreComposited()
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 != nullptr && x11->connection() != nullptr) {
        return hasCompositingManager(x11->connection());
    }
    return onWayland();
}

} // namespace ferrobank
