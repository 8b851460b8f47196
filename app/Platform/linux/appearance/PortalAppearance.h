#pragma once

#include "Platform/DesktopAppearance.h"

#include <QtCore/QMap>
#include <QtDBus/QDBusPendingCall>
#include <QtDBus/QDBusVariant>

namespace ferrobank {

/// The desktop's wishes as the settings portal tells them (org.freedesktop.portal.Settings): the appearance
/// keys that every portal has, and the animation switches of GNOME and KDE. Without a portal there are no
/// wishes.
class PortalAppearance : public DesktopAppearance {
    Q_OBJECT

public:
    using Settings = QMap<QString, QVariantMap>; ///< by namespace, then by key

    PortalAppearance();

    void settle() override;

    /// Pure: what the settings mean.
    [[nodiscard]] static Wishes wishesFrom(const Settings& settings);

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void ask();
    void take(const QDBusPendingCall& answer);

    Settings _settings;
    QDBusPendingCall _firstAnswer;
    bool _answered = false;
};

} // namespace ferrobank
