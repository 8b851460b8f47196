#pragma once

#include "Platform/DesktopAppearance.h"

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QObject>

#include <functional>
#include <memory>
#include <variant>

struct xcb_connection_t;

namespace ferrobank {

/// The settings that the settings daemons of Xfce, MATE, Cinnamon and others publish on an X display, after
/// freedesktop.org's XSETTINGS specification 0.5. Plain values by name; colours are left out.
using XSettingsValues = QHash<QByteArray, std::variant<int, QByteArray>>;

/// Decodes the property's content. Pure; what is cut off or broken ends the list, and nothing is read beyond
/// it.
[[nodiscard]] XSettingsValues decodeXSettings(const QByteArray& property);

/// What the settings say about looks. Pure.
[[nodiscard]] DesktopAppearance::Wishes wishesFrom(const XSettingsValues& settings);

/// Reads them once. Empty without a daemon.
[[nodiscard]] XSettingsValues readXSettings(xcb_connection_t* connection, int screen);

/// The factor by which a desktop with this setting wants windows enlarged that do not learn it in another
/// way; 1 for none. `dpi` is the resolution that the display's resources name, which the toolkit follows by
/// itself. Pure.
[[nodiscard]] int windowScale(const XSettingsValues& settings, double dpi);

/// Tells when the settings of the toolkit's own display change, or a daemon comes or goes. Main thread.
class XSettingsWatch {
public:
    virtual ~XSettingsWatch() = default;

    /// Null where the toolkit is not on an X display.
    [[nodiscard]] static std::unique_ptr<XSettingsWatch> make(std::function<void()> changed);

    [[nodiscard]] virtual XSettingsValues values() const = 0;
};

} // namespace ferrobank
