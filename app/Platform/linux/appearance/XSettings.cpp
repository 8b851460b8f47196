#include "Platform/linux/appearance/XSettings.h"

#include "Platform/linux/appearance/GtkNames.h"

#include <QtCore/QAbstractNativeEventFilter>
#include <QtCore/QCoreApplication>
#include <QtCore/QtEndian>
#include <QtGui/QGuiApplication>
#include <QtGui/qguiapplication_platform.h>

#include <xcb/xcb.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <utility>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

template <typename Reply>
using ReplyPointer = std::unique_ptr<Reply, decltype(&std::free)>;

constexpr uint32_t kMostWords = 64 * 1024;
constexpr int kUsualDpi = 96;

/// Reads the wire format, in whose byte order, and stops at its end.
class Reader {
public:
    explicit Reader(const QByteArray& bytes) : _bytes(bytes) {}

    [[nodiscard]] bool ok() const { return _ok; }

    void setBigEndian(bool big) { _big = big; }

    template <typename Number>
    Number number()
    {
        if (!take(sizeof(Number))) {
            return 0;
        }
        const char* at = _bytes.constData() + _at - sizeof(Number);
        return _big ? qFromBigEndian<Number>(at) : qFromLittleEndian<Number>(at);
    }

    QByteArray text(qsizetype length)
    {
        if (!take(length)) {
            return {};
        }
        const QByteArray words = _bytes.mid(_at - length, length);
        skip((4 - length % 4) % 4);
        return words;
    }

    void skip(qsizetype count) { static_cast<void>(take(count)); }

private:
    bool take(qsizetype count)
    {
        _ok = _ok && count >= 0 && count <= _bytes.size() - _at;
        if (_ok) {
            _at += count;
        }
        return _ok;
    }

    QByteArray _bytes;
    qsizetype _at = 0;
    bool _ok = true;
    bool _big = false;
};

QByteArray word(const XSettingsValues& settings, const char* name)
{
    const auto found = settings.constFind(name);
    const auto* text = found == settings.constEnd() ? nullptr : std::get_if<QByteArray>(&*found);
    return text == nullptr ? QByteArray() : *text;
}

std::optional<int> figure(const XSettingsValues& settings, const char* name)
{
    const auto found = settings.constFind(name);
    const auto* value = found == settings.constEnd() ? nullptr : std::get_if<int>(&*found);
    return value == nullptr ? std::nullopt : std::optional(*value);
}

xcb_atom_t atom(xcb_connection_t* connection, const QByteArray& name)
{
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<uint16_t>(name.size()), name.constData());
    const ReplyPointer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr),
                                                      &std::free);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

xcb_atom_t selection(xcb_connection_t* connection, int screen)
{
    return atom(connection, "_XSETTINGS_S" + QByteArray::number(screen));
}

xcb_window_t ownerOf(xcb_connection_t* connection, xcb_atom_t selection)
{
    const auto cookie = xcb_get_selection_owner(connection, selection);
    const ReplyPointer<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->owner : xcb_window_t(XCB_WINDOW_NONE);
}

XSettingsValues valuesOf(xcb_connection_t* connection, xcb_window_t owner, xcb_atom_t property)
{
    if (owner == XCB_WINDOW_NONE) {
        return {};
    }
    const auto cookie = xcb_get_property(connection, 0, owner, property, property, 0, kMostWords);
    const ReplyPointer<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection, cookie, nullptr),
                                                       &std::free);
    if (!reply || reply->format != 8) {
        return {};
    }
    return decodeXSettings(QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                                      xcb_get_property_value_length(reply.get())));
}

class QtDisplayWatch : public XSettingsWatch, public QAbstractNativeEventFilter {
public:
    QtDisplayWatch(xcb_connection_t* connection, std::function<void()> changed)
        : _connection(connection),
          _changed(std::move(changed)),
          _selection(selection(connection, 0)),
          _property(atom(connection, "_XSETTINGS_SETTINGS")),
          _manager(atom(connection, "MANAGER"))
    {
        follow();
        QCoreApplication::instance()->installNativeEventFilter(this);
    }

    ~QtDisplayWatch() override { QCoreApplication::instance()->removeNativeEventFilter(this); }

    QtDisplayWatch(const QtDisplayWatch&) = delete;
    QtDisplayWatch& operator=(const QtDisplayWatch&) = delete;

    [[nodiscard]] XSettingsValues values() const override { return _values; }

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* /*result*/) override
    {
        if (type != "xcb_generic_event_t"_ba) {
            return false;
        }
        constexpr uint8_t kSent = 0x80;
        const auto* event = static_cast<const xcb_generic_event_t*>(message);
        switch (event->response_type & ~kSent) {
        case XCB_PROPERTY_NOTIFY: {
            const auto* change = static_cast<const xcb_property_notify_event_t*>(message);
            if (change->window == _owner && change->atom == _property) {
                read();
            }
            break;
        }
        case XCB_DESTROY_NOTIFY:
            if (static_cast<const xcb_destroy_notify_event_t*>(message)->window == _owner) {
                follow();
                _changed();
            }
            break;
        case XCB_CLIENT_MESSAGE: {
            const auto* told = static_cast<const xcb_client_message_event_t*>(message);
            if (told->type == _manager && told->data.data32[1] == _selection) {
                follow();
                _changed();
            }
            break;
        }
        default:
            break;
        }
        return false;
    }

private:
    void follow()
    {
        _owner = ownerOf(_connection, _selection);
        if (_owner != XCB_WINDOW_NONE) {
            // The same events that the toolkit asks for there: a client has one wish a window.
            const uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
            xcb_change_window_attributes(_connection, _owner, XCB_CW_EVENT_MASK, &events);
            xcb_flush(_connection);
        }
        _values = valuesOf(_connection, _owner, _property);
    }

    void read()
    {
        _values = valuesOf(_connection, _owner, _property);
        _changed();
    }

    xcb_connection_t* _connection;
    std::function<void()> _changed;
    xcb_atom_t _selection;
    xcb_atom_t _property;
    xcb_atom_t _manager;
    xcb_window_t _owner = XCB_WINDOW_NONE;
    XSettingsValues _values;
};

} // namespace

XSettingsValues decodeXSettings(const QByteArray& property)
{
    constexpr uint8_t kInteger = 0;
    constexpr uint8_t kText = 1;
    constexpr uint8_t kColour = 2;
    constexpr uint8_t kBigEndian = 1;
    XSettingsValues values;
    Reader reader(property);
    reader.setBigEndian(reader.number<uint8_t>() == kBigEndian);
    reader.skip(3);
    reader.skip(4); // the serial number
    const auto count = reader.number<uint32_t>();
    for (uint32_t index = 0; index < count && reader.ok(); ++index) {
        const auto type = reader.number<uint8_t>();
        reader.skip(1);
        const auto length = reader.number<uint16_t>();
        const QByteArray name = reader.text(length);
        reader.skip(4); // when it last changed
        if (type == kInteger) {
            const auto number = reader.number<int32_t>();
            if (reader.ok()) {
                values.insert(name, number);
            }
        } else if (type == kText) {
            const auto size = reader.number<uint32_t>();
            const QByteArray text = reader.text(qsizetype(size));
            if (reader.ok()) {
                values.insert(name, text);
            }
        } else if (type == kColour) {
            reader.skip(8);
        } else {
            break;
        }
    }
    return values;
}

DesktopAppearance::Wishes wishesFrom(const XSettingsValues& settings)
{
    DesktopAppearance::Wishes wishes;
    const QString theme = QString::fromUtf8(word(settings, "Net/ThemeName"));
    if (!theme.isEmpty()) {
        wishes.dark = isDarkGtkTheme(theme);
        wishes.highContrast = isHighContrastGtkTheme(theme);
    }
    if (const auto font = gtkFont(QString::fromUtf8(word(settings, "Gtk/FontName")))) {
        wishes.fontFamily = font->family;
        if (font->size > 0) {
            wishes.fontSize = font->size;
        }
    }
    wishes.reducedMotion = figure(settings, "Gtk/EnableAnimations") == 0;
    return wishes;
}

XSettingsValues readXSettings(xcb_connection_t* connection, int screen)
{
    return valuesOf(connection, ownerOf(connection, selection(connection, screen)),
                    atom(connection, "_XSETTINGS_SETTINGS"));
}

int windowScale(const XSettingsValues& settings, double dpi)
{
    const int wanted = figure(settings, "Gdk/WindowScalingFactor").value_or(1);
    // Where the resolution grew with it, the toolkit enlarges everything by itself.
    const bool known = dpi >= kUsualDpi * (wanted - 0.5);
    return wanted > 1 && wanted <= 4 && !known ? wanted : 1;
}

std::unique_ptr<XSettingsWatch> XSettingsWatch::make(std::function<void()> changed)
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr || x11->connection() == nullptr) {
        return nullptr;
    }
    return std::make_unique<QtDisplayWatch>(x11->connection(), std::move(changed));
}

} // namespace ferrobank
