#pragma once

#include "Platform/SettingsPages.h"

#include <QtCore/QList>

namespace ferrobank {

/// Notes which settings pages were asked for.
class FakeSettingsPages : public SettingsPages {
public:
    QList<SettingsPage> opened;

    void open(SettingsPage page) override { opened.append(page); }
};

} // namespace ferrobank
