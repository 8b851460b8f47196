#include "Platform/linux/tray/StatusNotifierItem.h"

#include <QtCore/QMetaObject>

#include <unistd.h>

#include <cstring>
#include <utility>

namespace ferrobank {

namespace {

constexpr auto kInterface = "org.kde.StatusNotifierItem";
constexpr auto kWatcher = "org.kde.StatusNotifierWatcher";
constexpr auto kWatcherPath = "/StatusNotifierWatcher";

int appendPixmaps(sd_bus_message* message, const std::vector<TrayPixmap>& pixmaps)
{
    sd_bus_message_open_container(message, 'a', "(iiay)");
    for (const TrayPixmap& pixmap : pixmaps) {
        sd_bus_message_open_container(message, 'r', "iiay");
        sd_bus_message_append(message, "ii", pixmap.width, pixmap.height);
        sd_bus_message_append_array(message, 'y', pixmap.argb.constData(),
                                    static_cast<size_t>(pixmap.argb.size()));
        sd_bus_message_close_container(message);
    }
    return sd_bus_message_close_container(message);
}

} // namespace

/// The bus's side of the item: one function for each method, one for all properties.
struct StatusNotifierItemCalls {
    static StatusNotifierItem& self(void* item) { return *static_cast<StatusNotifierItem*>(item); }

    static int activate(sd_bus_message* call, void* item, sd_bus_error*)
    {
        // What a click leads to may open a window; the host is answered first.
        const QString token = self(item).takeActivationToken();
        QMetaObject::invokeMethod(
            &self(item), [item, token] { Q_EMIT self(item).activated(token); }, Qt::QueuedConnection);
        return sd_bus_reply_method_return(call, "");
    }

    static int ignore(sd_bus_message* call, void*, sd_bus_error*)
    {
        return sd_bus_reply_method_return(call, "");
    }

    static int provideToken(sd_bus_message* call, void* item, sd_bus_error*)
    {
        const char* token = nullptr;
        if (sd_bus_message_read(call, "s", &token) < 0) {
            return -EINVAL;
        }
        self(item)._activationToken = QString::fromUtf8(token);
        return sd_bus_reply_method_return(call, "");
    }

    static int property(sd_bus*, const char*, const char*, const char* name, sd_bus_message* reply,
                        void* data, sd_bus_error*)
    {
        const StatusNotifierItem& item = self(data);
        const auto is = [name](const char* other) { return std::strcmp(name, other) == 0; };
        const auto text = [reply](const std::string& words) {
            return sd_bus_message_append(reply, "s", words.c_str());
        };
        if (is("Category")) {
            return text("SystemServices");
        }
        if (is("Id")) {
            return text("org.ferrobank.Ferrobank");
        }
        if (is("Title")) {
            return text(item._face.title.toStdString());
        }
        if (is("Status")) {
            return text(item._face.needsAttention ? "NeedsAttention" : "Active");
        }
        if (is("WindowId")) {
            return sd_bus_message_append(reply, "i", 0);
        }
        const bool drawn = item._icon.look() == TrayIcon::Look::Drawn;
        if (drawn && (is("IconName") || is("AttentionIconName"))) {
            return text(""); // hosts take a name before a picture
        }
        if (is("IconName") || is("AttentionIconName")) {
            return text(TrayIcon::name(is("IconName") ? item.shape() : TrayIcon::Shape::NeedsAttention));
        }
        if (is("IconThemePath")) {
            return text(item._icon.themePath());
        }
        if (is("IconPixmap") || is("AttentionIconPixmap")) {
            return appendPixmaps(
                reply, item._icon.pixmaps(is("IconPixmap") ? item.shape() : TrayIcon::Shape::NeedsAttention));
        }
        if (is("OverlayIconPixmap")) {
            return appendPixmaps(reply, {});
        }
        if (is("ToolTip")) {
            sd_bus_message_open_container(reply, 'r', "sa(iiay)ss");
            text(drawn ? "" : TrayIcon::name(item.shape()));
            appendPixmaps(reply, {});
            sd_bus_message_append(reply, "ss", item._face.title.toStdString().c_str(),
                                  item._face.toolTip.toHtmlEscaped().toStdString().c_str());
            return sd_bus_message_close_container(reply);
        }
        if (is("ItemIsMenu")) {
            return sd_bus_message_append(reply, "b", 0);
        }
        if (is("Menu")) {
            return sd_bus_message_append(reply, "o", ExportedMenu::kPath);
        }
        return text(""); // OverlayIconName, AttentionMovieName
    }

    static int watcherChanged(sd_bus_message* signal, void* item, sd_bus_error*)
    {
        const char* name = nullptr;
        const char* before = nullptr;
        const char* after = nullptr;
        if (sd_bus_message_read(signal, "sss", &name, &before, &after) < 0) {
            return 0;
        }
        if (*after != '\0') {
            self(item).registerWithWatcher();
        } else {
            self(item).setTaken(false);
        }
        return 0;
    }

    static int hostArrived(sd_bus_message*, void* item, sd_bus_error*)
    {
        self(item).askForHost();
        return 0;
    }

    static int registered(sd_bus_message* reply, void* item, sd_bus_error*)
    {
        if (sd_bus_message_is_method_error(reply, nullptr) == 0) {
            self(item).askForHost();
        }
        return 0;
    }

    static int hostTold(sd_bus_message* reply, void* item, sd_bus_error*)
    {
        int present = 0;
        if (sd_bus_message_is_method_error(reply, nullptr) == 0 &&
            sd_bus_message_read(reply, "v", "b", &present) >= 0)
        {
            self(item).setTaken(present != 0);
        }
        return 0;
    }

    static const sd_bus_vtable table[];
};

const sd_bus_vtable StatusNotifierItemCalls::table[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Activate", "ii", "", activate, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("SecondaryActivate", "ii", "", activate, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("ContextMenu", "ii", "", ignore, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Scroll", "is", "", ignore, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("ProvideXdgActivationToken", "s", "", provideToken, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("Category", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Id", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Title", "s", property, 0, 0),
    SD_BUS_PROPERTY("Status", "s", property, 0, 0),
    SD_BUS_PROPERTY("WindowId", "i", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("IconName", "s", property, 0, 0),
    SD_BUS_PROPERTY("IconThemePath", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("IconPixmap", "a(iiay)", property, 0, 0),
    SD_BUS_PROPERTY("OverlayIconName", "s", property, 0, 0),
    SD_BUS_PROPERTY("OverlayIconPixmap", "a(iiay)", property, 0, 0),
    SD_BUS_PROPERTY("AttentionIconName", "s", property, 0, 0),
    SD_BUS_PROPERTY("AttentionIconPixmap", "a(iiay)", property, 0, 0),
    SD_BUS_PROPERTY("AttentionMovieName", "s", property, 0, 0),
    SD_BUS_PROPERTY("ToolTip", "(sa(iiay)ss)", property, 0, 0),
    SD_BUS_PROPERTY("ItemIsMenu", "b", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Menu", "o", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_SIGNAL("NewTitle", "", 0),
    SD_BUS_SIGNAL("NewIcon", "", 0),
    SD_BUS_SIGNAL("NewAttentionIcon", "", 0),
    SD_BUS_SIGNAL("NewOverlayIcon", "", 0),
    SD_BUS_SIGNAL("NewToolTip", "", 0),
    SD_BUS_SIGNAL("NewStatus", "s", 0),
    SD_BUS_VTABLE_END,
};

StatusNotifierItem::StatusNotifierItem(SessionBus& bus, TrayIcon icon)
    : _bus(bus),
      _icon(std::move(icon)),
      _name("org.kde.StatusNotifierItem-" + std::to_string(getpid()) + "-1"),
      _menu(bus, {.aboutToShow = [this] { Q_EMIT aboutToShowMenu(); },
                  .chosen =
                      [this](int entry) {
                          const QString token = takeActivationToken();
                          QMetaObject::invokeMethod(
                              this, [this, entry, token] { Q_EMIT chosen(entry, token); },
                              Qt::QueuedConnection);
                      }})
{
    sd_bus_slot* slot = nullptr;
    sd_bus_add_object_vtable(_bus.get(), &slot, kPath, kInterface, StatusNotifierItemCalls::table, this);
    _object.reset(slot);
    slot = nullptr;
    sd_bus_add_match_async(_bus.get(), &slot,
                           "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
                           "member='NameOwnerChanged',arg0='org.kde.StatusNotifierWatcher'",
                           StatusNotifierItemCalls::watcherChanged, nullptr, this);
    _watcherChanges.reset(slot);
    slot = nullptr;
    sd_bus_add_match_async(
        _bus.get(), &slot,
        "type='signal',path='/StatusNotifierWatcher',interface='org.kde.StatusNotifierWatcher',"
        "member='StatusNotifierHostRegistered'",
        StatusNotifierItemCalls::hostArrived, nullptr, this);
    _hostArrivals.reset(slot);
    // Some hosts only take items that own a name of this form.
    sd_bus_request_name_async(_bus.get(), nullptr, _name.c_str(), 0, nullptr, nullptr);
    registerWithWatcher();
}

void StatusNotifierItem::setFace(const StatusItemFace& face)
{
    if (face == _face) {
        return;
    }
    const StatusItemFace before = std::exchange(_face, face);
    if (before.title != face.title) {
        tell("NewTitle");
    }
    if (before.title != face.title || before.toolTip != face.toolTip) {
        tell("NewToolTip");
    }
    if (before.needsAttention != face.needsAttention) {
        tell("NewIcon");
        sd_bus_emit_signal(_bus.get(), kPath, kInterface, "NewStatus", "s",
                           face.needsAttention ? "NeedsAttention" : "Active");
    }
    _bus.flushFromLoop();
}

void StatusNotifierItem::setMenu(const QList<MenuEntry>& entries)
{
    _menu.setEntries(entries);
}

void StatusNotifierItem::repeatMenu()
{
    _menu.repeat();
}

void StatusNotifierItem::registerWithWatcher()
{
    sd_bus_message* raw = nullptr;
    if (sd_bus_message_new_method_call(_bus.get(), &raw, kWatcher, kWatcherPath, kWatcher,
                                       "RegisterStatusNotifierItem") < 0)
    {
        return;
    }
    const BusMessage call(raw);
    sd_bus_message_append(raw, "s", _name.c_str());
    // No watcher now is normal: its arrival is followed.
    sd_bus_message_set_auto_start(raw, 0);
    sd_bus_slot* slot = nullptr;
    sd_bus_call_async(_bus.get(), &slot, raw, StatusNotifierItemCalls::registered, this, 0);
    _registration.reset(slot);
    _bus.flushFromLoop();
}

void StatusNotifierItem::askForHost()
{
    sd_bus_slot* slot = nullptr;
    sd_bus_call_method_async(_bus.get(), &slot, kWatcher, kWatcherPath, "org.freedesktop.DBus.Properties",
                             "Get", StatusNotifierItemCalls::hostTold, this, "ss", kWatcher,
                             "IsStatusNotifierHostRegistered");
    _hostQuestion.reset(slot);
    _bus.flushFromLoop();
}

void StatusNotifierItem::setTaken(bool taken)
{
    if (taken != _taken) {
        _taken = taken;
        // Whoever listens may take a while; the bus comes first.
        QMetaObject::invokeMethod(this, [this, taken] { Q_EMIT takenChanged(taken); }, Qt::QueuedConnection);
    }
}

void StatusNotifierItem::tell(const char* signal)
{
    sd_bus_emit_signal(_bus.get(), kPath, kInterface, signal, "");
}

QString StatusNotifierItem::takeActivationToken()
{
    return std::exchange(_activationToken, QString());
}

TrayIcon::Shape StatusNotifierItem::shape() const
{
    return _face.needsAttention ? TrayIcon::Shape::NeedsAttention : TrayIcon::Shape::Normal;
}

} // namespace ferrobank
