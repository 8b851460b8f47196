#include "Platform/StartScale.h"

#include "Platform/linux/appearance/XSettings.h"

#include <QtCore/QByteArray>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace ferrobank {

namespace {

constexpr double kUsualDpi = 96;
constexpr uint32_t kMostWords = 64 * 1024;
constexpr const char* kFactor = "QT_SCALE_FACTOR";

/// The resolution in the display's resource database, which the toolkit reads as well.
double resourceDpi(xcb_connection_t* connection)
{
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const auto cookie = xcb_get_property(connection, 0, screen->root, XCB_ATOM_RESOURCE_MANAGER,
                                         XCB_ATOM_STRING, 0, kMostWords);
    const std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> reply(
        xcb_get_property_reply(connection, cookie, nullptr), &std::free);
    if (!reply) {
        return kUsualDpi;
    }
    const QByteArray resources(static_cast<const char*>(xcb_get_property_value(reply.get())),
                               xcb_get_property_value_length(reply.get()));
    for (const QByteArray& line : resources.split('\n')) {
        if (line.startsWith("Xft.dpi:")) {
            bool isNumber = false;
            const double dpi = line.mid(8).trimmed().toDouble(&isNumber);
            return isNumber ? dpi : kUsualDpi;
        }
    }
    return kUsualDpi;
}

int wantedScale()
{
    for (const char* name : {kFactor, "QT_SCREEN_SCALE_FACTORS", "QT_USE_PHYSICAL_DPI", "QT_FONT_DPI"}) {
        if (qEnvironmentVariableIsSet(name)) {
            return 1; // somebody has decided already
        }
    }
    if (qEnvironmentVariableIsEmpty("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
        qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
    {
        return 1;
    }
    int screen = 0;
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, &screen), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get()) != 0) {
        return 1;
    }
    return windowScale(readXSettings(connection.get(), screen), resourceDpi(connection.get()));
}

} // namespace

StartScale::StartScale()
{
    if (const int scale = wantedScale(); scale > 1) {
        _isSet = qputenv(kFactor, QByteArray::number(scale));
    }
}

StartScale::~StartScale()
{
    settled();
}

void StartScale::settled()
{
    if (_isSet) {
        qunsetenv(kFactor);
        _isSet = false;
    }
}

} // namespace ferrobank
