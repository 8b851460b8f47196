#pragma once

#include <QCoro/QCoroTask>
#include <QtCore/QString>

namespace ferrobank {

/// What the desktop does for us with files and folders. Main thread. Paths are absolute.
class Workspace {
public:
    virtual ~Workspace() = default;

    /// Opens a file or folder with the user's program for it. Returns at once; a failure is told by the
    /// desktop.
    virtual void openPath(const QString& path) = 0;

    /// Opens an address in the user's browser. Returns at once.
    virtual void openUrl(const QString& url) = 0;

    /// Gives the folder of a volume the icon in the image file, where none is set yet. Ends without a result:
    /// an icon that cannot be set leaves everything as it was. May take long on a slow volume; never blocks
    /// the caller.
    virtual QCoro::Task<> setVolumeIcon(QString imageFile, QString folder) = 0;

    /// Moves a file or folder to the user's Trash. The result tells whether it is there now.
    virtual QCoro::Task<bool> recycle(QString path) = 0;
};

} // namespace ferrobank
