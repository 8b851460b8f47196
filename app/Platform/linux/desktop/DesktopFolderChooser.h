#pragma once

#include "Platform/FolderChooser.h"

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusServiceWatcher>

class QDBusMessage;
class QFileDialog;

namespace ferrobank {

/// Asks the desktop's portal, which shows the desktop's own dialog; without one, or when it does not answer,
/// Qt's dialog.
class DesktopFolderChooser : public QObject, public FolderChooser {
    Q_OBJECT

public:
    DesktopFolderChooser();

    void choose(const Request& request, std::function<void(QString)> chosen) override;

private Q_SLOTS:
    void portalResponded(uint response, const QVariantMap& results);

private:
    void askPortal();
    void leavePortal();
    void showOwnDialog();
    void end(const QString& folder);

    Request _request;
    std::function<void(QString)> _chosen; ///< set while a dialog is open
    QString _portalRequest;               ///< object path, while the portal is asked
    QTimer _portalAnswers;
    QDBusServiceWatcher _portalEnd;
    QPointer<QFileDialog> _dialog;
    unsigned _count = 0;
};

} // namespace ferrobank
