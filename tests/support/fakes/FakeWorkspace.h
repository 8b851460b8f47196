#pragma once

#include "Platform/Workspace.h"
#include "support/fakes/Gate.h"

#include <QtCore/QList>
#include <QtCore/QPair>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>

namespace ferrobank {

/// A desktop that notes what it was asked to do.
class FakeWorkspace : public Workspace {
public:
    QStringList openedPaths;
    QStringList openedUrls;
    QList<QPair<QString, QString>> volumeIcons; ///< image file, folder
    QStringList recycled;
    bool recycleSucceeds = true;
    std::function<void(QString)> onVolumeIcon; ///< called with the folder once its icon is set
    Gate iconsSet;                             ///< open at first; shut it to keep an icon from being finished

    FakeWorkspace() { iconsSet.open(); }

    void openPath(const QString& path) override { openedPaths.append(path); }

    void openUrl(const QString& url) override { openedUrls.append(url); }

    QCoro::Task<> setVolumeIcon(QString imageFile, QString folder) override
    {
        volumeIcons.append(qMakePair(imageFile, folder));
        auto set = iconsSet.passage();
        co_await set;
        if (onVolumeIcon) {
            onVolumeIcon(folder);
        }
    }

    QCoro::Task<bool> recycle(QString path) override
    {
        recycled.append(path);
        co_return recycleSucceeds;
    }
};

} // namespace ferrobank
