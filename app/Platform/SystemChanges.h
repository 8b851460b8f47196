#pragma once

#include <QtCore/QObject>

namespace ferrobank {

/// Tells when something outside the program may have changed that it shows without asking for it regularly:
/// the login items, the command link, the settings. Main thread. Costs nothing while nothing happens.
class SystemChanges : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

Q_SIGNALS:
    /// Once for changes that come close together. Whether anything really differs is for the reader to see.
    void changed();
};

} // namespace ferrobank
