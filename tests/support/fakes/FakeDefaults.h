#pragma once

#include "Platform/Defaults.h"

#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ferrobank {

/// Settings in memory.
class FakeDefaults : public Defaults {
public:
    QHash<QString, bool> values;
    bool reachesDisk = true;   ///< what setBool() reports
    mutable QStringList reads; ///< the keys asked for

    [[nodiscard]] bool boolForKey(const QString& key) const override
    {
        reads.append(key);
        return values.value(key, false);
    }

    bool setBool(const QString& key, bool value) override
    {
        values.insert(key, value);
        return reachesDisk;
    }
};

} // namespace ferrobank
