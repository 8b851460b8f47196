#include "Ferrobank/Components/Theme.h"

#include "Ferrobank/Components/FigureDocument.h"

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
      _displayHeight(QGuiApplication::primaryScreen()->availableGeometry().height()),
      _displayWidth(QGuiApplication::primaryScreen()->availableGeometry().width())
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

void Theme::setHighContrast(bool high)
{
    if (_highContrast != high) {
        _highContrast = high;
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
        Q_EMIT displayChanged();
    }
}

void Theme::setDisplayWidth(int width)
{
    if (_displayWidth != width) {
        _displayWidth = width;
        Q_EMIT displayChanged();
    }
}

void Theme::setMinimisable(bool minimisable)
{
    if (_minimisable != minimisable) {
        _minimisable = minimisable;
        Q_EMIT minimisableChanged();
    }
}

bool Theme::isMirrored() const
{
    return QGuiApplication::isRightToLeft();
}

void Theme::rebuild()
{
    const QColor accent = _accent.isValid() ? _accent : Palette::defaultAccent();
    const Contrast contrast = _highContrast ? Contrast::High : Contrast::Usual;
    _palette = _dark ? Palette::dark(accent, contrast) : Palette::light(accent, contrast);
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

QFont Theme::fitted(const QFont& font, const QStringList& figures, qreal width, qreal least)
{
    const auto widest = [&figures](const QFont& with) {
        qreal most = 0;
        for (const QString& figure : figures) {
            most = std::max(most, FigureDocument::width(figure, with));
        }
        return most;
    };
    QFont fitting = font;
    const int size = QFontInfo(font).pixelSize();
    const int smallest = int(std::ceil(size * least));
    for (int smaller = size; smaller > smallest && widest(fitting) > width;) {
        fitting.setPixelSize(--smaller);
    }
    return fitting;
}

QString Theme::elided(const QString& figure, const QFont& font, qreal width)
{
    if (FigureDocument::width(figure, font) <= width) {
        return figure;
    }
    static constexpr QChar kEllipsis(0x2026);
    QString shorter = figure;
    while (!shorter.isEmpty() && FigureDocument::width(shorter + kEllipsis, font) > width) {
        shorter.chop(1);
    }
    return shorter + kEllipsis;
}

QString Theme::roundFace(const QStringList& families)
{
    // Round, with lining figures of one height, and with the semibold weight or something near it.
    static const QStringList known{u"SF Pro Rounded"_s,   u"Nunito"_s,       u"M PLUS Rounded 1c"_s,
                                   u"Rounded Mplus 1c"_s, u"Varela Round"_s, u"Quicksand"_s};
    const auto found =
        std::ranges::find_if(known, [&families](const QString& face) { return families.contains(face); });
    return found == known.end() ? QString() : *found;
}

QFont Theme::monospace() const
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    scale(font, _base, 12 / kBodySize);
    return font;
}

QFont Theme::hero() const
{
    static const QString kRoundFace = roundFace(QFontDatabase::families());
    QFont font = _base;
    if (!kRoundFace.isEmpty()) {
        font.setFamily(kRoundFace);
    }
    font.setPixelSize(int(std::lround(52 * growth())));
    font.setWeight(QFont::DemiBold);
    return font;
}

QFont Theme::heroQuiet() const
{
    QFont font = hero();
    font.setPixelSize(int(std::lround(30 * growth())));
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
