#pragma once

#include <QtCore/QString>

namespace ferrobank {

/// The user's persisted settings. Main thread; written through at once.
class Defaults {
public:
    virtual ~Defaults() = default;

    /// False for a key that is missing, unreadable or anything but true.
    [[nodiscard]] virtual bool boolForKey(const QString& key) const = 0;

    /// Readers in this process see the value at once. The result tells whether it also reached the disk.
    virtual bool setBool(const QString& key, bool value) = 0;
};

} // namespace ferrobank
