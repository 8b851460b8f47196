#include "Platform/linux/tray/MenuChange.h"

#include <algorithm>

namespace ferrobank {

MenuChange menuChange(const QList<MenuEntry>& before, const QList<MenuEntry>& after)
{
    MenuChange change;
    change.order =
        !std::equal(before.begin(), before.end(), after.begin(), after.end(),
                    [](const MenuEntry& one, const MenuEntry& other) { return one.id == other.id; });
    for (const MenuEntry& entry : after) {
        const auto old = std::find_if(before.begin(), before.end(),
                                      [&](const MenuEntry& one) { return one.id == entry.id; });
        if (old != before.end() && *old != entry) {
            change.changed.append(entry.id);
        }
    }
    return change;
}

} // namespace ferrobank
