#include "Platform/linux/tray/ExportedMenu.h"

#include "Platform/linux/tray/MenuChange.h"
#include "Platform/linux/tray/MenuMessages.h"

#include <QtGui/QGuiApplication>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace ferrobank {

namespace {

constexpr auto kInterface = "com.canonical.dbusmenu";
constexpr int kRoot = kMenuRoot;

int unknownEntry(sd_bus_error* error)
{
    return sd_bus_error_set_const(error, SD_BUS_ERROR_INVALID_ARGS, "There is no such entry.");
}

} // namespace

/// The bus's side of the menu: one function for each member of the interface.
struct ExportedMenuCalls {
    static ExportedMenu& self(void* menu) { return *static_cast<ExportedMenu*>(menu); }

    static int getLayout(sd_bus_message* call, void* menu, sd_bus_error* error)
    {
        int parent = kRoot;
        int depth = -1;
        WantedProperties wanted;
        if (sd_bus_message_read(call, "ii", &parent, &depth) < 0 || !readWanted(call, wanted)) {
            return -EINVAL;
        }
        self(menu)._handlers.aboutToShow();
        const MenuEntry* entry = self(menu).find(parent);
        if (parent != kRoot && entry == nullptr) {
            return unknownEntry(error);
        }
        sd_bus_message* raw = nullptr;
        if (const int failed = sd_bus_message_new_method_return(call, &raw); failed < 0) {
            return failed;
        }
        const BusMessage reply(raw);
        sd_bus_message_append(raw, "u", self(menu)._revision);
        const bool withChildren = parent == kRoot && depth != 0;
        appendNode(raw, parent, entry, wanted, withChildren ? self(menu)._entries : QList<MenuEntry>());
        return sd_bus_send(nullptr, raw, nullptr);
    }

    static int getGroupProperties(sd_bus_message* call, void* menu, sd_bus_error*)
    {
        std::vector<int> ids;
        WantedProperties wanted;
        if (!readIds(call, ids) || !readWanted(call, wanted)) {
            return -EINVAL;
        }
        sd_bus_message* raw = nullptr;
        if (const int failed = sd_bus_message_new_method_return(call, &raw); failed < 0) {
            return failed;
        }
        const BusMessage reply(raw);
        if (ids.empty()) {
            for (const MenuEntry& entry : self(menu)._entries) {
                ids.push_back(entry.id);
            }
        }
        sd_bus_message_open_container(raw, 'a', "(ia{sv})");
        for (const int id : ids) {
            const MenuEntry* entry = self(menu).find(id);
            if (entry == nullptr && id != kRoot) {
                continue;
            }
            sd_bus_message_open_container(raw, 'r', "ia{sv}");
            sd_bus_message_append(raw, "i", id);
            appendProperties(raw, entry, wanted);
            sd_bus_message_close_container(raw);
        }
        sd_bus_message_close_container(raw);
        return sd_bus_send(nullptr, raw, nullptr);
    }

    static int getProperty(sd_bus_message* call, void* menu, sd_bus_error* error)
    {
        int id = kRoot;
        const char* name = nullptr;
        if (sd_bus_message_read(call, "is", &id, &name) < 0) {
            return -EINVAL;
        }
        const MenuEntry* entry = self(menu).find(id);
        if (entry == nullptr) {
            return unknownEntry(error);
        }
        const std::string wanted(name);
        if (wanted == "label" && entry->kind != MenuEntry::Kind::Divider) {
            return sd_bus_reply_method_return(call, "v", "s", menuLabel(*entry).c_str());
        }
        if (wanted == "type") {
            const bool divider = entry->kind == MenuEntry::Kind::Divider;
            return sd_bus_reply_method_return(call, "v", "s", divider ? "separator" : "standard");
        }
        if (wanted == "enabled") {
            return sd_bus_reply_method_return(call, "v", "b", entry->kind == MenuEntry::Kind::Text ? 0 : 1);
        }
        if (wanted == "visible") {
            return sd_bus_reply_method_return(call, "v", "b", 1);
        }
        if (wanted == "toggle-type") {
            return sd_bus_reply_method_return(call, "v", "s",
                                              entry->kind == MenuEntry::Kind::Toggle ? "checkmark" : "");
        }
        if (wanted == "toggle-state") {
            const int state = entry->checked ? 1 : 0;
            return sd_bus_reply_method_return(call, "v", "i",
                                              entry->kind == MenuEntry::Kind::Toggle ? state : -1);
        }
        return sd_bus_error_set_const(error, SD_BUS_ERROR_INVALID_ARGS, "There is no such property.");
    }

    /// False for an entry that is not there (any more).
    static bool takeEvent(ExportedMenu& menu, int id, const char* event)
    {
        const MenuEntry* entry = menu.find(id);
        if (entry == nullptr && id != kRoot) {
            return false;
        }
        if (entry != nullptr && isChoosable(*entry) && std::strcmp(event, "clicked") == 0) {
            menu._handlers.chosen(id);
        }
        return true;
    }

    static int event(sd_bus_message* call, void* menu, sd_bus_error* error)
    {
        int id = kRoot;
        const char* name = nullptr;
        if (sd_bus_message_read(call, "is", &id, &name) < 0) {
            return -EINVAL;
        }
        if (!takeEvent(self(menu), id, name)) {
            return unknownEntry(error);
        }
        return sd_bus_reply_method_return(call, "");
    }

    static int eventGroup(sd_bus_message* call, void* menu, sd_bus_error* error)
    {
        std::vector<int> unknown;
        size_t count = 0;
        sd_bus_message_enter_container(call, 'a', "(isvu)");
        while (sd_bus_message_enter_container(call, 'r', "isvu") > 0) {
            int id = kRoot;
            const char* name = nullptr;
            if (sd_bus_message_read(call, "is", &id, &name) < 0 || sd_bus_message_skip(call, "vu") < 0) {
                return -EINVAL;
            }
            sd_bus_message_exit_container(call);
            ++count;
            if (!takeEvent(self(menu), id, name)) {
                unknown.push_back(id);
            }
        }
        if (count > 0 && unknown.size() == count) {
            return unknownEntry(error);
        }
        return replyWithIds(call, {unknown});
    }

    static int aboutToShow(sd_bus_message* call, void* menu, sd_bus_error*)
    {
        const uint32_t before = self(menu)._revision;
        self(menu)._handlers.aboutToShow();
        return sd_bus_reply_method_return(call, "b", self(menu)._revision != before ? 1 : 0);
    }

    static int aboutToShowGroup(sd_bus_message* call, void* menu, sd_bus_error*)
    {
        std::vector<int> ids;
        if (!readIds(call, ids)) {
            return -EINVAL;
        }
        const uint32_t before = self(menu)._revision;
        self(menu)._handlers.aboutToShow();
        std::vector<int> needUpdate;
        std::vector<int> unknown;
        for (const int id : ids) {
            if (id == kRoot && self(menu)._revision != before) {
                needUpdate.push_back(id);
            } else if (id != kRoot && self(menu).find(id) == nullptr) {
                unknown.push_back(id);
            }
        }
        return replyWithIds(call, {needUpdate, unknown});
    }

    static int replyWithIds(sd_bus_message* call, const std::vector<std::vector<int>>& lists)
    {
        sd_bus_message* raw = nullptr;
        if (const int failed = sd_bus_message_new_method_return(call, &raw); failed < 0) {
            return failed;
        }
        const BusMessage reply(raw);
        for (const std::vector<int>& list : lists) {
            sd_bus_message_append_array(raw, 'i', list.data(), list.size() * sizeof(int));
        }
        return sd_bus_send(nullptr, raw, nullptr);
    }

    static int version(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                       sd_bus_error*)
    {
        return sd_bus_message_append(reply, "u", 3U);
    }

    static int textDirection(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                             sd_bus_error*)
    {
        return sd_bus_message_append(reply, "s", QGuiApplication::isRightToLeft() ? "rtl" : "ltr");
    }

    static int status(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                      sd_bus_error*)
    {
        return sd_bus_message_append(reply, "s", "normal");
    }

    static int iconThemePath(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                             sd_bus_error*)
    {
        return sd_bus_message_append(reply, "as", 0U);
    }

    static const sd_bus_vtable table[];
};

const sd_bus_vtable ExportedMenuCalls::table[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("GetLayout", "iias", "u(ia{sv}av)", getLayout, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("GetGroupProperties", "aias", "a(ia{sv})", getGroupProperties, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("GetProperty", "is", "v", getProperty, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Event", "isvu", "", event, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("EventGroup", "a(isvu)", "ai", eventGroup, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("AboutToShow", "i", "b", aboutToShow, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("AboutToShowGroup", "ai", "aiai", aboutToShowGroup, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("ItemsPropertiesUpdated", "a(ia{sv})a(ias)", 0),
    SD_BUS_SIGNAL("LayoutUpdated", "ui", 0),
    SD_BUS_SIGNAL("ItemActivationRequested", "iu", 0),
    SD_BUS_PROPERTY("Version", "u", version, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("TextDirection", "s", textDirection, 0, 0),
    SD_BUS_PROPERTY("Status", "s", status, 0, 0),
    SD_BUS_PROPERTY("IconThemePath", "as", iconThemePath, 0, 0),
    SD_BUS_VTABLE_END,
};

ExportedMenu::ExportedMenu(SessionBus& bus, Handlers handlers) : _bus(bus), _handlers(std::move(handlers))
{
    sd_bus_slot* slot = nullptr;
    sd_bus_add_object_vtable(_bus.get(), &slot, kPath, kInterface, ExportedMenuCalls::table, this);
    _slot.reset(slot);
}

void ExportedMenu::setEntries(const QList<MenuEntry>& entries)
{
    const MenuChange change = menuChange(_entries, entries);
    if (change.none()) {
        return;
    }
    _entries = entries;
    // A host that re-reads the order asks for the looks of new entries only, so both are told.
    announceLooks(change.changed);
    if (change.order) {
        announceOrder();
    }
    _bus.flushFromLoop();
}

void ExportedMenu::repeat()
{
    QList<int> ids;
    for (const MenuEntry& entry : _entries) {
        ids.append(entry.id);
    }
    announceLooks(ids);
    _bus.flushFromLoop();
}

const MenuEntry* ExportedMenu::find(int id) const
{
    for (const MenuEntry& entry : _entries) {
        if (entry.id == id) {
            return &entry;
        }
    }
    return nullptr;
}

void ExportedMenu::announceLooks(const QList<int>& ids)
{
    if (ids.isEmpty()) {
        return;
    }
    sd_bus_message* raw = nullptr;
    if (sd_bus_message_new_signal(_bus.get(), &raw, kPath, kInterface, "ItemsPropertiesUpdated") < 0) {
        return;
    }
    const BusMessage signal(raw);
    sd_bus_message_open_container(raw, 'a', "(ia{sv})");
    for (const int id : ids) {
        sd_bus_message_open_container(raw, 'r', "ia{sv}");
        sd_bus_message_append(raw, "i", id);
        appendProperties(raw, find(id), {});
        sd_bus_message_close_container(raw);
    }
    sd_bus_message_close_container(raw);
    sd_bus_message_append(raw, "a(ias)", 0U);
    sd_bus_send(_bus.get(), raw, nullptr);
}

void ExportedMenu::announceOrder()
{
    ++_revision;
    sd_bus_emit_signal(_bus.get(), kPath, kInterface, "LayoutUpdated", "ui", _revision, kRoot);
}

} // namespace ferrobank
