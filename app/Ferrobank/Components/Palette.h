#pragma once

#include <QtCore/QObject>
#include <QtGui/QColor>

namespace ferrobank {

/// Names of the colours that carry a meaning. As text or as a symbol they are readable on the window and on a
/// panel.
class Tints {
    Q_GADGET

public:
    enum Tint { Primary, Secondary, Tertiary, Accent, Green, Orange, Red };
    Q_ENUM(Tint)
};

using Tint = Tints::Tint;

/// How far apart colours are. High is for desktops that ask for it: text as dark or as light as it can be,
/// and an edge around everything that has one.
enum class Contrast { Usual, High };

/// Every colour of the screens. Plain value, pure. Text reaches a contrast of 4.5 : 1 on `window`, on `panel`
/// and on its own pill (7 : 1 with high contrast); symbols, the parts of controls that tell their state, and
/// Tertiary, which is never text, reach 3 : 1.
struct Palette {
    QColor window;
    QColor panel;    ///< the quaternary fill at half strength, translucent
    QColor control;  ///< a bordered button at rest
    QColor border;   ///< hairline around controls
    QColor hairline; ///< between rows
    QColor edge;     ///< hairline around a window, opaque
    QColor track;    ///< a switch that is off, opaque; its knob is white
    QColor switchOn; ///< one that is on, and the filled part of a progress bar
    QColor onSwitch; ///< the knob on it
    QColor groove;   ///< the empty part of a progress bar
    QColor bar;      ///< the solid part of the savings bar
    QColor accent;   ///< fill of prominent controls
    QColor onAccent; ///< text and marks on it
    QColor danger;   ///< fill of destructive controls
    QColor onDanger;
    QColor focusRing;
    QColor primary;
    QColor secondary;
    QColor tertiary;
    QColor accentText;
    QColor green;
    QColor orange;
    QColor red;
    QColor vividGreen; ///< for symbols, which need less contrast than text
    QColor vividOrange;
    QColor vividRed;

    [[nodiscard]] static Palette light(const QColor& accent, Contrast contrast = Contrast::Usual);
    [[nodiscard]] static Palette dark(const QColor& accent, Contrast contrast = Contrast::Usual);

    /// Where the desktop names no accent colour.
    [[nodiscard]] static QColor defaultAccent();

    [[nodiscard]] QColor tint(Tint tint) const;

    /// The same meaning for a symbol that stands by itself.
    [[nodiscard]] QColor symbolTint(Tint tint) const;

    friend bool operator==(const Palette&, const Palette&) = default;
};

/// Contrast of two opaque colours by the formula of WCAG 2: 1 to 21.
[[nodiscard]] double contrast(const QColor& one, const QColor& other);

/// What is seen where a translucent colour lies over an opaque one.
[[nodiscard]] QColor composed(const QColor& over, const QColor& under);

/// The colour, moved towards black or white just as far as needed to reach the contrast on the background.
[[nodiscard]] QColor readable(const QColor& color, const QColor& background, double wanted);

} // namespace ferrobank
