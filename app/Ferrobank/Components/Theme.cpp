#include "Ferrobank/Components/Theme.h"

#include <QtCore/QEvent>
#include <QtGui/QFontDatabase>
#include <QtGui/QFontInfo>
#include <QtGui/QFontMetricsF>
#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtQml/QQmlEngine>

#include <algorithm>
#include <array>
#include <cmath>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

constexpr double kBodySize = 13;
constexpr std::array kTints{Tint::Primary, Tint::Secondary, Tint::Tertiary, Tint::Accent,
                            Tint::Green,   Tint::Orange,    Tint::Red};

void scale(QFont& font, const QFont& base, double factor)
{
    if (base.pixelSize() > 0) {
        font.setPixelSize(int(std::lround(base.pixelSize() * factor)));
    } else {
        font.setPointSizeF(base.pointSizeF() * factor);
    }
}

} // namespace

Theme::Theme(QObject* parent)
    : QObject(parent),
      _base(QGuiApplication::font()),
      _displayHeight(QGuiApplication::primaryScreen()->availableGeometry().height())
{
    qGuiApp->installEventFilter(this);
    rebuild();
}

Theme* Theme::create(QQmlEngine* engine, QJSEngine* /*scripts*/)
{
    return new Theme(engine);
}

Theme& Theme::of(QQmlEngine& engine)
{
    auto* theme = engine.singletonInstance<Theme*>(qmlTypeId("Ferrobank", 1, 0, "Theme"));
    Q_ASSERT_X(theme != nullptr, "Theme::of", "the module is not registered");
    return *theme;
}

void Theme::setDark(bool dark)
{
    if (_dark != dark) {
        _dark = dark;
        rebuild();
    }
}

void Theme::setAccent(const QColor& accent)
{
    if (_accent != accent) {
        _accent = accent;
        rebuild();
    }
}

void Theme::setReducedMotion(bool reduced)
{
    if (_reducedMotion != reduced) {
        _reducedMotion = reduced;
        Q_EMIT reducedMotionChanged();
    }
}

void Theme::setComposited(bool composited)
{
    if (_composited != composited) {
        _composited = composited;
        Q_EMIT compositedChanged();
    }
}

void Theme::setDisplayHeight(int height)
{
    if (_displayHeight != height) {
        _displayHeight = height;
        Q_EMIT displayHeightChanged();
    }
}

bool Theme::isMirrored() const
{
    return QGuiApplication::isRightToLeft();
}

void Theme::rebuild()
{
    const QColor accent = _accent.isValid() ? _accent : Palette::defaultAccent();
    _palette = _dark ? Palette::dark(accent) : Palette::light(accent);
    Q_EMIT colorsChanged();
}

QVariantList Theme::tints() const
{
    QVariantList colors;
    for (const Tint tint : kTints) {
        colors << _palette.tint(tint);
    }
    return colors;
}

QVariantList Theme::symbolTints() const
{
    QVariantList colors;
    for (const Tint tint : kTints) {
        colors << _palette.symbolTint(tint);
    }
    return colors;
}

QFont Theme::styled(double size, QFont::Weight weight) const
{
    QFont font = _base;
    scale(font, _base, size / kBodySize);
    font.setWeight(weight);
    return font;
}

qreal Theme::textScale() const
{
    return QFontInfo(_base).pixelSize() / kBodySize;
}

QFont Theme::fitted(const QFont& font, const QString& text, qreal width, qreal least) const
{
    const qreal wanted = QFontMetricsF(font).horizontalAdvance(text);
    if (wanted <= width) {
        return font;
    }
    QFont smaller = font;
    const int size = QFontInfo(font).pixelSize();
    smaller.setPixelSize(int(std::max(std::floor(size * width / wanted), std::ceil(size * least))));
    return smaller;
}

QFont Theme::monospace() const
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    scale(font, _base, 12 / kBodySize);
    return font;
}

QFont Theme::hero() const
{
    QFont font = _base;
    font.setPixelSize(52);
    font.setWeight(QFont::DemiBold);
    return font;
}

QFont Theme::heroQuiet() const
{
    QFont font = hero();
    font.setPixelSize(30);
    return font;
}

bool Theme::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == qGuiApp && event->type() == QEvent::ApplicationFontChange) {
        _base = QGuiApplication::font();
        Q_EMIT fontsChanged();
    }
    if (watched == qGuiApp && event->type() == QEvent::ApplicationLayoutDirectionChange) {
        Q_EMIT mirroredChanged();
    }
    return QObject::eventFilter(watched, event);
}

} // namespace ferrobank
