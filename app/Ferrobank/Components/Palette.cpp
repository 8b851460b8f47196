#include "Ferrobank/Components/Palette.h"

#include <algorithm>
#include <cmath>

namespace ferrobank {

namespace {

constexpr double kTextContrast = 4.5;
constexpr double kSymbolContrast = 3.0;
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
QColor meaning(const QColor& color, const QColor& panel, const QColor& window)
{
    QColor text = color;
    // The pill takes on the colour of its text, so both move together; a few rounds settle it.
    for (int round = 0; round < 4; ++round) {
        const QColor pill = composed(withAlpha(text, kPillStrength), window);
        text = readable(readable(text, panel, kTextContrast), pill, kTextContrast);
    }
    return text;
}

void fillDerived(Palette& palette, const QColor& accent)
{
    palette.edge = composed(palette.hairline, palette.window);
    const QColor panel = composed(palette.panel, palette.window);
    const QColor white(Qt::white);
    const QColor ink(0x1d, 0x1d, 0x1f);
    // A bright accent such as yellow keeps its character under dark text; any other carries white.
    const bool bright = luminance(accent) > 0.42;
    palette.onAccent = bright ? ink : white;
    palette.accent = readable(accent, palette.onAccent, kTextContrast);
    palette.accentText = readable(accent, panel, kTextContrast);
    palette.focusRing = readable(accent, palette.window, kSymbolContrast);
    palette.onDanger = white;
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

Palette Palette::light(const QColor& accent)
{
    Palette palette;
    palette.window = QColor(0xfc, 0xfc, 0xfd);
    palette.panel = QColor(0, 0, 0, 11);
    palette.control = QColor(0xff, 0xff, 0xff);
    palette.border = QColor(0, 0, 0, 38);
    palette.hairline = QColor(0, 0, 0, 20);
    palette.track = QColor(0, 0, 0, 51);
    palette.bar = QColor(0x2f, 0xa8, 0x4f);
    palette.danger = QColor(0xc8, 0x2a, 0x2a);
    palette.primary = QColor(0x1d, 0x1d, 0x1f);
    palette.secondary = QColor(0x60, 0x61, 0x68);
    palette.tertiary = QColor(0x8c, 0x8d, 0x94);
    fillDerived(palette, accent);
    const QColor panel = composed(palette.panel, palette.window);
    palette.green = meaning(QColor(0x1e, 0x85, 0x42), panel, palette.window);
    palette.orange = meaning(QColor(0xb8, 0x5c, 0x00), panel, palette.window);
    palette.red = meaning(QColor(0xc9, 0x28, 0x28), panel, palette.window);
    palette.vividGreen = readable(QColor(0x2a, 0xa6, 0x4c), panel, kSymbolContrast);
    palette.vividOrange = readable(QColor(0xf0, 0x86, 0x00), panel, kSymbolContrast);
    palette.vividRed = readable(QColor(0xe0, 0x3a, 0x36), panel, kSymbolContrast);
    return palette;
}

Palette Palette::dark(const QColor& accent)
{
    Palette palette;
    palette.window = QColor(0x1f, 0x1f, 0x22);
    palette.panel = QColor(255, 255, 255, 15);
    palette.control = QColor(255, 255, 255, 26);
    palette.border = QColor(255, 255, 255, 31);
    palette.hairline = QColor(255, 255, 255, 23);
    palette.track = QColor(255, 255, 255, 64);
    palette.bar = QColor(0x32, 0xc4, 0x5c);
    palette.danger = QColor(0xc8, 0x2f, 0x2f);
    palette.primary = QColor(0xf3, 0xf3, 0xf5);
    palette.secondary = QColor(0xab, 0xac, 0xb3);
    palette.tertiary = QColor(0x82, 0x83, 0x8a);
    fillDerived(palette, accent);
    const QColor panel = composed(palette.panel, palette.window);
    palette.green = meaning(QColor(0x3d, 0xcb, 0x68), panel, palette.window);
    palette.orange = meaning(QColor(0xff, 0xa0, 0x2e), panel, palette.window);
    palette.red = meaning(QColor(0xff, 0x6b, 0x64), panel, palette.window);
    palette.vividGreen = readable(QColor(0x3d, 0xcb, 0x68), panel, kSymbolContrast);
    palette.vividOrange = readable(QColor(0xff, 0xa0, 0x2e), panel, kSymbolContrast);
    palette.vividRed = readable(QColor(0xff, 0x5c, 0x55), panel, kSymbolContrast);
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
