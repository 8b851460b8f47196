#pragma once

#include <QCoro/QCoroTask>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ferrobank {

/// What the system says about itself, for a problem report. Plain value; what could not be learned is empty.
struct SystemFacts {
    QString desktop;        ///< the desktop's own names
    QString session;        ///< the kind of session, such as x11 or wayland
    QString installKind;    ///< how this copy of the application came onto the machine
    QString serviceManager; ///< what keeps the drive's service, with its version
    QString trayHost;       ///< the program that shows tray items
    QStringList portals;    ///< the desktop portals that run
    QString mountLine;      ///< how the drive is mounted
    QString user;           ///< name of the account; never to be told
    QString host;           ///< name of the computer; never to be told

    friend bool operator==(const SystemFacts&, const SystemFacts&) = default;
};

/// Asks the system about itself. Main thread; belongs to System.
class SystemReport {
public:
    virtual ~SystemReport() = default;

    /// Never fails and never takes longer than a few seconds. `mountpoint` is the drive's.
    virtual QCoro::Task<SystemFacts> read(QString mountpoint) = 0;
};

} // namespace ferrobank
