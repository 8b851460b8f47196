#include "Ferrobank/Components/Palette.h"

#include <algorithm>
#include <cmath>

namespace ferrobank {

namespace {

constexpr double kTextContrast = 4.5;
constexpr double kHighTextContrast = 7;
// Half a step more than the 3 that is wanted: pixels at a shape's edge lie between it and the ground.
constexpr double kSymbolContrast = 3.3;
constexpr float kPillStrength = 0.15F;

double linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

QColor mixed(const QColor& from, const QColor& to, float share)
{
    return QColor::fromRgbF(std::lerp(from.redF(), to.redF(), share),
                            std::lerp(from.greenF(), to.greenF(), share),
                            std::lerp(from.blueF(), to.blueF(), share));
}

QColor withAlpha(QColor color, float alpha)
{
    color.setAlphaF(alpha);
    return color;
}

// Readable on the panel, which is the harder of the two grounds, and on a pill of its own colour.
QColor meaning(const QColor& color, const QColor& panel, const QColor& window, double wanted)
{
    QColor text = color;
    // The pill takes on the colour of its text, so both move together; a few rounds settle it.
    for (int round = 0; round < 12; ++round) {
        const QColor pill = composed(withAlpha(text, kPillStrength), window);
        text = readable(readable(text, panel, wanted), pill, wanted);
    }
    return text;
}

// The colours as they are meant, before they are made readable.
struct Meanings {
    QColor green;
    QColor orange;
    QColor red;
    QColor vividGreen;
    QColor vividOrange;
    QColor vividRed;
};

void raiseContrast(Palette& palette)
{
    const bool dark = luminance(palette.window) < 0.18;
    const QColor ink = dark ? QColor(Qt::white) : QColor(Qt::black);
    palette.window = dark ? QColor(Qt::black) : QColor(Qt::white);
    palette.panel = withAlpha(ink, dark ? 0.1F : 0.05F);
    palette.control = palette.window;
    palette.border = ink;
    palette.hairline = withAlpha(ink, 0.6F);
    palette.primary = ink;
    palette.secondary = dark ? QColor(0xd6, 0xd6, 0xda) : QColor(0x38, 0x38, 0x3c);
    palette.tertiary = dark ? QColor(0xb4, 0xb4, 0xba) : QColor(0x56, 0x56, 0x5c);
}

void fillDerived(Palette& palette, const QColor& accent, const Meanings& meanings, Contrast contrast)
{
    if (contrast == Contrast::High) {
        raiseContrast(palette);
    }
    const double text = contrast == Contrast::High ? kHighTextContrast : kTextContrast;
    // Two windows over each other have nothing else that parts them where the desktop draws no shadow.
    palette.edge = composed(withAlpha(palette.primary, 0.36F), palette.window);
    const QColor panel = composed(palette.panel, palette.window);
    const QColor white(Qt::white);
    const QColor ink(0x1d, 0x1d, 0x1f);
    // A bright accent such as yellow keeps its character under dark text; any other carries white.
    const bool bright = luminance(accent) > 0.42;
    palette.onAccent = bright ? ink : white;
    palette.accent = readable(accent, palette.onAccent, text);
    palette.accentText = readable(accent, panel, text);
    palette.focusRing = readable(readable(accent, palette.window, kSymbolContrast), panel, kSymbolContrast);
    palette.onDanger = white;
    palette.danger = readable(palette.danger, white, text);
    // What tells a switch's state is its colour on the ground and the knob on its colour.
    palette.track = readable(readable(palette.track, panel, kSymbolContrast), white, kSymbolContrast);
    palette.switchOn = readable(accent, panel, kSymbolContrast);
    palette.onSwitch =
        ferrobank::contrast(palette.switchOn, white) >= kSymbolContrast ? white : QColor(Qt::black);
    palette.groove = palette.hairline;
    // For symbols made of dots, whose pixels are nearly all edge.
    palette.tertiary = readable(palette.tertiary, panel, kTextContrast);
    palette.bar = readable(palette.bar, panel, kSymbolContrast);
    palette.green = meaning(meanings.green, panel, palette.window, text);
    palette.orange = meaning(meanings.orange, panel, palette.window, text);
    palette.red = meaning(meanings.red, panel, palette.window, text);
    palette.vividGreen = readable(meanings.vividGreen, panel, kSymbolContrast);
    palette.vividOrange = readable(meanings.vividOrange, panel, kSymbolContrast);
    palette.vividRed = readable(meanings.vividRed, panel, kSymbolContrast);
}

} // namespace

double contrast(const QColor& one, const QColor& other)
{
    const double a = luminance(one) + 0.05;
    const double b = luminance(other) + 0.05;
    return std::max(a, b) / std::min(a, b);
}

QColor composed(const QColor& over, const QColor& under)
{
    return mixed(under, over, over.alphaF());
}

QColor readable(const QColor& color, const QColor& background, double wanted)
{
    const QColor goal = luminance(background) > 0.18 ? QColor(Qt::black) : QColor(Qt::white);
    constexpr int kSteps = 100;
    for (int step = 0; step <= kSteps; ++step) {
        const QColor candidate(mixed(color, goal, float(step) / kSteps).rgb());
        if (contrast(candidate, background) >= wanted) {
            return candidate;
        }
    }
    return goal;
}

QColor Palette::defaultAccent()
{
    return {0x2f, 0x6f, 0xde};
}

Palette Palette::light(const QColor& accent, Contrast contrast)
{
    Palette palette;
    palette.window = QColor(0xfc, 0xfc, 0xfd);
    palette.panel = QColor(0, 0, 0, 11);
    palette.control = QColor(0xff, 0xff, 0xff);
    palette.border = QColor(0, 0, 0, 38);
    palette.hairline = QColor(0, 0, 0, 20);
    palette.track = QColor(0x86, 0x87, 0x8d);
    palette.bar = QColor(0x2f, 0xa8, 0x4f);
    palette.danger = QColor(0xc8, 0x2a, 0x2a);
    palette.primary = QColor(0x1d, 0x1d, 0x1f);
    palette.secondary = QColor(0x60, 0x61, 0x68);
    palette.tertiary = QColor(0x8c, 0x8d, 0x94);
    const Meanings meanings{.green = QColor(0x1e, 0x85, 0x42),
                            .orange = QColor(0xb8, 0x5c, 0x00),
                            .red = QColor(0xc9, 0x28, 0x28),
                            .vividGreen = QColor(0x2a, 0xa6, 0x4c),
                            .vividOrange = QColor(0xf0, 0x86, 0x00),
                            .vividRed = QColor(0xe0, 0x3a, 0x36)};
    fillDerived(palette, accent, meanings, contrast);
    return palette;
}

Palette Palette::dark(const QColor& accent, Contrast contrast)
{
    Palette palette;
    palette.window = QColor(0x1f, 0x1f, 0x22);
    palette.panel = QColor(255, 255, 255, 15);
    palette.control = QColor(255, 255, 255, 26);
    palette.border = QColor(255, 255, 255, 31);
    palette.hairline = QColor(255, 255, 255, 23);
    palette.track = QColor(0x80, 0x81, 0x88);
    palette.bar = QColor(0x32, 0xc4, 0x5c);
    palette.danger = QColor(0xc8, 0x2f, 0x2f);
    palette.primary = QColor(0xf3, 0xf3, 0xf5);
    palette.secondary = QColor(0xab, 0xac, 0xb3);
    palette.tertiary = QColor(0x82, 0x83, 0x8a);
    const Meanings meanings{.green = QColor(0x3d, 0xcb, 0x68),
                            .orange = QColor(0xff, 0xa0, 0x2e),
                            .red = QColor(0xff, 0x6b, 0x64),
                            .vividGreen = QColor(0x3d, 0xcb, 0x68),
                            .vividOrange = QColor(0xff, 0xa0, 0x2e),
                            .vividRed = QColor(0xff, 0x5c, 0x55)};
    fillDerived(palette, accent, meanings, contrast);
    return palette;
}

QColor Palette::tint(Tint tint) const
{
    switch (tint) {
    case Tint::Primary:
        return primary;
    case Tint::Secondary:
        return secondary;
    case Tint::Tertiary:
        return tertiary;
    case Tint::Accent:
        return accentText;
    case Tint::Green:
        return green;
    case Tint::Orange:
        return orange;
    case Tint::Red:
        return red;
    }
    return primary;
}

QColor Palette::symbolTint(Tint tint) const
{
    switch (tint) {
    case Tint::Green:
        return vividGreen;
    case Tint::Orange:
        return vividOrange;
    case Tint::Red:
        return vividRed;
    case Tint::Primary:
    case Tint::Secondary:
    case Tint::Tertiary:
    case Tint::Accent:
        break;
    }
    return this->tint(tint);
}

} // namespace ferrobank
