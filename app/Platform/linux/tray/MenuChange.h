#pragma once

#include "Platform/MenuEntry.h"

#include <QtCore/QList>

namespace ferrobank {

/// What a host that shows one list of entries has to be told so that it shows another. Plain value.
struct MenuChange {
    bool order = false;      ///< entries came, went or moved
    QList<int> changed = {}; ///< ids that stay, but look different

    [[nodiscard]] bool none() const { return !order && changed.isEmpty(); }
};

[[nodiscard]] MenuChange menuChange(const QList<MenuEntry>& before, const QList<MenuEntry>& after);

} // namespace ferrobank
