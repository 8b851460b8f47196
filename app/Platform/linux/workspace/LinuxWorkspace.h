#pragma once

#include "Platform/Workspace.h"
#include "Platform/linux/files/Elsewhere.h"
#include "Platform/linux/workspace/DesktopMessages.h"

#include <QtCore/QObject>

namespace ferrobank {

/// The user's desktop, whichever it is: its file manager over the session bus, its openers, its Trash. Main
/// thread. What it started ends by itself, also after it has gone.
///
/// A file or folder is looked at elsewhere first, because one on a dead file system would hang its opener.
/// What cannot be opened at all is told in a sentence.
class LinuxWorkspace final : public QObject, public Workspace {
    Q_OBJECT

public:
    explicit LinuxWorkspace(DesktopMessages messages = {}) : _messages(std::move(messages)) {}

    void openPath(const QString& path) override;
    void openUrl(const QString& url) override;
    QCoro::Task<> setVolumeIcon(QString imageFile, QString folder) override;
    QCoro::Task<bool> recycle(QString path) override;

private:
    DesktopMessages _messages;
    Elsewhere _elsewhere;
};

} // namespace ferrobank
