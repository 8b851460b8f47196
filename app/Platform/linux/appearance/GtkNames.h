#pragma once

#include <QtCore/QString>

#include <optional>

namespace ferrobank {

/// A font as GTK's settings name it: "Noto Sans Semi-Bold 10.5".
struct GtkFont {
    QString family;  ///< without the words for weight, slant and width
    double size = 0; ///< in points; 0 when none is told

    friend bool operator==(const GtkFont&, const GtkFont&) = default;
};

/// Pure. No value for a name without a family.
[[nodiscard]] std::optional<GtkFont> gtkFont(const QString& name);

/// Whether the name of a GTK theme is that of a dark one: it is all that some desktops say about it. Pure.
[[nodiscard]] bool isDarkGtkTheme(const QString& name);

/// The same for themes for people who need more contrast.
[[nodiscard]] bool isHighContrastGtkTheme(const QString& name);

} // namespace ferrobank
