#pragma once

#include <QCoro/QCoroTask>
#include <QtCore/QString>

namespace ferrobank {

/// Calls to the desktop's services on the session bus. Main thread. A bus or a service that is missing, an
/// error, or no answer in time all give false: the caller has another way.

/// Shows the folder in the file manager (org.freedesktop.FileManager1).
QCoro::Task<bool> showFolder(QString folder, QString activationToken);

/// Shows the folder that holds the file, with the file selected.
QCoro::Task<bool> revealFile(QString file, QString activationToken);

/// Opens an address through the portal (org.freedesktop.portal.OpenURI), the only way out of a sandbox.
QCoro::Task<bool> openThroughPortal(QString url, QString activationToken);

/// Opens a file or folder through the portal.
QCoro::Task<bool> openFileThroughPortal(QString path, QString activationToken);

/// Whether this program runs in a sandbox that lets it start no other programs.
[[nodiscard]] bool isSandboxed();

} // namespace ferrobank
