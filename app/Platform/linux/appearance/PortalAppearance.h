#pragma once

#include "Platform/DesktopAppearance.h"
#include "Platform/linux/appearance/XSettings.h"

#include <QtCore/QMap>
#include <QtDBus/QDBusPendingCall>
#include <QtDBus/QDBusVariant>

namespace ferrobank {

/// The desktop's wishes as the settings portal tells them (org.freedesktop.portal.Settings): the appearance
/// keys that every portal has, the animation switches of GNOME and KDE, and on GNOME its font, its factor for
/// text and its switch for contrast. What the portal does not tell is taken from the settings that the
/// settings daemon of an X desktop publishes.
class PortalAppearance : public DesktopAppearance {
    Q_OBJECT

public:
    using Settings = QMap<QString, QVariantMap>; ///< by namespace, then by key

    PortalAppearance();
    ~PortalAppearance() override;

    void settle() override;

    /// Pure: what the settings mean on the desktop of this name, as XDG_CURRENT_DESKTOP has it. GNOME's own
    /// settings are there on other desktops as well, where nobody sets them.
    [[nodiscard]] static Wishes wishesFrom(const Settings& settings, const QString& currentDesktop);

    /// Pure: what the portal says and, where it is silent, what the X desktop does.
    [[nodiscard]] static Wishes joined(const Wishes& portal, const std::optional<Wishes>& display);

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void ask();
    void take(const QDBusPendingCall& answer);
    void tell();

    Settings _settings;
    QString _currentDesktop;
    std::unique_ptr<XSettingsWatch> _display;
    QDBusPendingCall _firstAnswer;
    bool _answered = false;
};

} // namespace ferrobank
