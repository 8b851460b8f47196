#include "Platform/linux/tray/MenuMessages.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace ferrobank {

namespace {

bool wants(const WantedProperties& wanted, const char* name)
{
    return wanted.empty() || std::find(wanted.begin(), wanted.end(), name) != wanted.end();
}

} // namespace

std::string menuLabel(const MenuEntry& entry)
{
    QString text = entry.text;
    return text.replace(u'_', QStringLiteral("__")).toStdString();
}

bool isChoosable(const MenuEntry& entry)
{
    return entry.kind == MenuEntry::Kind::Button || entry.kind == MenuEntry::Kind::Toggle;
}

void appendProperties(sd_bus_message* message, const MenuEntry* entry, const WantedProperties& wanted)
{
    sd_bus_message_open_container(message, 'a', "{sv}");
    if (entry == nullptr) {
        if (wants(wanted, "children-display")) {
            sd_bus_message_append(message, "{sv}", "children-display", "s", "submenu");
        }
    } else if (entry->kind == MenuEntry::Kind::Divider) {
        if (wants(wanted, "type")) {
            sd_bus_message_append(message, "{sv}", "type", "s", "separator");
        }
    } else {
        if (wants(wanted, "label")) {
            sd_bus_message_append(message, "{sv}", "label", "s", menuLabel(*entry).c_str());
        }
        if (entry->kind == MenuEntry::Kind::Text && wants(wanted, "enabled")) {
            sd_bus_message_append(message, "{sv}", "enabled", "b", 0);
        }
        if (entry->kind == MenuEntry::Kind::Toggle) {
            if (wants(wanted, "toggle-type")) {
                sd_bus_message_append(message, "{sv}", "toggle-type", "s", "checkmark");
            }
            if (wants(wanted, "toggle-state")) {
                sd_bus_message_append(message, "{sv}", "toggle-state", "i", entry->checked ? 1 : 0);
            }
        }
    }
    sd_bus_message_close_container(message);
}

void appendNode(sd_bus_message* message, int id, const MenuEntry* entry, const WantedProperties& wanted,
                const QList<MenuEntry>& children)
{
    sd_bus_message_open_container(message, 'r', "ia{sv}av");
    sd_bus_message_append(message, "i", id);
    appendProperties(message, entry, wanted);
    sd_bus_message_open_container(message, 'a', "v");
    for (const MenuEntry& child : children) {
        sd_bus_message_open_container(message, 'v', "(ia{sv}av)");
        appendNode(message, child.id, &child, wanted, {});
        sd_bus_message_close_container(message);
    }
    sd_bus_message_close_container(message);
    sd_bus_message_close_container(message);
}

bool readWanted(sd_bus_message* message, WantedProperties& wanted)
{
    char** names = nullptr;
    if (sd_bus_message_read_strv(message, &names) < 0) {
        return false;
    }
    if (names != nullptr) {
        for (char** name = names; *name != nullptr; ++name) {
            wanted.emplace_back(*name);
            free(*name);
        }
        free(static_cast<void*>(names));
    }
    return true;
}

bool readIds(sd_bus_message* message, std::vector<int>& ids)
{
    const void* data = nullptr;
    size_t bytes = 0;
    if (sd_bus_message_read_array(message, 'i', &data, &bytes) < 0) {
        return false;
    }
    ids.resize(bytes / sizeof(int));
    if (bytes > 0) {
        std::memcpy(ids.data(), data, bytes);
    }
    return true;
}

} // namespace ferrobank
