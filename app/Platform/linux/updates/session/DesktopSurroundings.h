#pragma once

#include "Platform/linux/updates/session/UpdateSurroundings.h"

#include <QtCore/QObject>

namespace ferrobank {
class Workspace;
}

namespace ferrobank::updates {

/// Notifications of the freedesktop kind over the session bus, pages through the workspace. The bus is spoken
/// to only once there is something to say.
class DesktopSurroundings final : public QObject, public UpdateSurroundings {
    Q_OBJECT

public:
    /// `workspace` must outlive this object.
    explicit DesktopSurroundings(Workspace& workspace);

    void notify(const QString& title, const QString& text) override;
    void openPage(const QString& url) override;

private Q_SLOTS:
    void actionInvoked(uint notification, const QString& action);

private:
    void listen();

    Workspace& _workspace;
    bool _isListening = false;
    uint _shown = 0; ///< the bus's number of the last notification, 0 for none
};

} // namespace ferrobank::updates
