#pragma once

#include "Ferrobank/Components/Palette.h"

#include <QtCore/QVariantList>
#include <QtGui/QFont>
#include <QtQml/qqml.h>

#include <algorithm>

class QJSEngine;
class QQmlEngine;

namespace ferrobank {

/// Colours, fonts and motion for every component: one object an engine. Main thread.
///
/// Knows little of the desktop: whoever owns the engine feeds what can be set. Fonts
/// follow the application's font, and keep their proportions to it: title 22, title 2 17, headline 13,
/// callout 12 and caption 10 to a body of 13.
class Theme : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

    Q_PROPERTY(bool dark READ isDark WRITE setDark NOTIFY colorsChanged)
    Q_PROPERTY(bool highContrast READ isHighContrast WRITE setHighContrast NOTIFY colorsChanged)
    Q_PROPERTY(bool reducedMotion READ reducedMotion WRITE setReducedMotion NOTIFY reducedMotionChanged)
    Q_PROPERTY(bool composited READ composited WRITE setComposited NOTIFY compositedChanged)
    /// The language reads from right to left.
    Q_PROPERTY(bool mirrored READ isMirrored NOTIFY mirroredChanged)
    /// The height that a window may have on its display, in device-independent pixels.
    Q_PROPERTY(int displayHeight READ displayHeight WRITE setDisplayHeight NOTIFY displayChanged)
    /// The same for its width.
    Q_PROPERTY(int displayWidth READ displayWidth WRITE setDisplayWidth NOTIFY displayChanged)
    /// Whether a window that is minimised can be got back.
    Q_PROPERTY(bool minimisable READ isMinimisable WRITE setMinimisable NOTIFY minimisableChanged)
    /// Around every screen, in device-independent pixels.
    Q_PROPERTY(int pagePadding READ pagePadding CONSTANT)

    Q_PROPERTY(QColor window READ window NOTIFY colorsChanged)
    Q_PROPERTY(QColor panel READ panel NOTIFY colorsChanged)
    Q_PROPERTY(QColor control READ control NOTIFY colorsChanged)
    Q_PROPERTY(QColor border READ border NOTIFY colorsChanged)
    Q_PROPERTY(QColor hairline READ hairline NOTIFY colorsChanged)
    Q_PROPERTY(QColor edge READ edge NOTIFY colorsChanged)
    Q_PROPERTY(QColor track READ track NOTIFY colorsChanged)
    Q_PROPERTY(QColor switchOn READ switchOn NOTIFY colorsChanged)
    Q_PROPERTY(QColor onSwitch READ onSwitch NOTIFY colorsChanged)
    Q_PROPERTY(QColor groove READ groove NOTIFY colorsChanged)
    Q_PROPERTY(QColor bar READ bar NOTIFY colorsChanged)
    Q_PROPERTY(QColor accent READ accent NOTIFY colorsChanged)
    Q_PROPERTY(QColor onAccent READ onAccent NOTIFY colorsChanged)
    Q_PROPERTY(QColor danger READ danger NOTIFY colorsChanged)
    Q_PROPERTY(QColor onDanger READ onDanger NOTIFY colorsChanged)
    Q_PROPERTY(QColor focusRing READ focusRing NOTIFY colorsChanged)
    Q_PROPERTY(QColor primary READ primary NOTIFY colorsChanged)
    Q_PROPERTY(QColor secondary READ secondary NOTIFY colorsChanged)
    Q_PROPERTY(QColor accentText READ accentText NOTIFY colorsChanged)
    Q_PROPERTY(QColor red READ red NOTIFY colorsChanged)
    /// The colours of Tints, in its order.
    Q_PROPERTY(QVariantList tints READ tints NOTIFY colorsChanged)
    /// The same for symbols that stand by themselves.
    Q_PROPERTY(QVariantList symbolTints READ symbolTints NOTIFY colorsChanged)

    Q_PROPERTY(qreal textScale READ textScale NOTIFY fontsChanged)
    /// The same for what is drawn beside text, which grows with it but does not shrink.
    Q_PROPERTY(qreal growth READ growth NOTIFY fontsChanged)
    Q_PROPERTY(QFont title READ title NOTIFY fontsChanged)
    Q_PROPERTY(QFont titleBold READ titleBold NOTIFY fontsChanged)
    Q_PROPERTY(QFont title2Bold READ title2Bold NOTIFY fontsChanged)
    Q_PROPERTY(QFont title2Figure READ title2Figure NOTIFY fontsChanged)
    Q_PROPERTY(QFont headline READ headline NOTIFY fontsChanged)
    Q_PROPERTY(QFont body READ body NOTIFY fontsChanged)
    Q_PROPERTY(QFont bodyMedium READ bodyMedium NOTIFY fontsChanged)
    Q_PROPERTY(QFont callout READ callout NOTIFY fontsChanged)
    Q_PROPERTY(QFont calloutMedium READ calloutMedium NOTIFY fontsChanged)
    Q_PROPERTY(QFont caption READ caption NOTIFY fontsChanged)
    Q_PROPERTY(QFont monospace READ monospace NOTIFY fontsChanged)
    Q_PROPERTY(QFont hero READ hero NOTIFY fontsChanged)
    Q_PROPERTY(QFont heroQuiet READ heroQuiet NOTIFY fontsChanged)

public:
    explicit Theme(QObject* parent = nullptr);

    static Theme* create(QQmlEngine* engine, QJSEngine* scripts);

    /// The theme of an engine that has loaded one of our documents.
    static Theme& of(QQmlEngine& engine);

    [[nodiscard]] bool isDark() const { return _dark; }

    void setDark(bool dark);

    [[nodiscard]] bool isHighContrast() const { return _highContrast; }

    void setHighContrast(bool high);

    /// The desktop's accent colour; an invalid colour stands for none.
    void setAccent(const QColor& accent);

    [[nodiscard]] bool reducedMotion() const { return _reducedMotion; }

    void setReducedMotion(bool reduced);

    [[nodiscard]] bool composited() const { return _composited; }

    void setComposited(bool composited);

    [[nodiscard]] bool isMirrored() const;

    [[nodiscard]] int displayHeight() const { return _displayHeight; }

    void setDisplayHeight(int height);

    [[nodiscard]] int displayWidth() const { return _displayWidth; }

    void setDisplayWidth(int width);

    [[nodiscard]] bool isMinimisable() const { return _minimisable; }

    void setMinimisable(bool minimisable);

    [[nodiscard]] int pagePadding() const { return 32; }

    [[nodiscard]] QColor window() const { return _palette.window; }

    [[nodiscard]] QColor panel() const { return _palette.panel; }

    [[nodiscard]] QColor control() const { return _palette.control; }

    [[nodiscard]] QColor border() const { return _palette.border; }

    [[nodiscard]] QColor hairline() const { return _palette.hairline; }

    [[nodiscard]] QColor edge() const { return _palette.edge; }

    [[nodiscard]] QColor track() const { return _palette.track; }

    [[nodiscard]] QColor switchOn() const { return _palette.switchOn; }

    [[nodiscard]] QColor onSwitch() const { return _palette.onSwitch; }

    [[nodiscard]] QColor groove() const { return _palette.groove; }

    [[nodiscard]] QColor bar() const { return _palette.bar; }

    [[nodiscard]] QColor accent() const { return _palette.accent; }

    [[nodiscard]] QColor onAccent() const { return _palette.onAccent; }

    [[nodiscard]] QColor danger() const { return _palette.danger; }

    [[nodiscard]] QColor onDanger() const { return _palette.onDanger; }

    [[nodiscard]] QColor focusRing() const { return _palette.focusRing; }

    [[nodiscard]] QColor primary() const { return _palette.primary; }

    [[nodiscard]] QColor secondary() const { return _palette.secondary; }

    [[nodiscard]] QColor accentText() const { return _palette.accentText; }

    [[nodiscard]] QColor red() const { return _palette.red; }

    [[nodiscard]] QVariantList tints() const;
    [[nodiscard]] QVariantList symbolTints() const;

    /// How large the desktop's text is: 1 for a body of 13 device-independent pixels.
    [[nodiscard]] qreal textScale() const;

    [[nodiscard]] qreal growth() const { return std::max(1.0, textScale()); }

    /// The font, made smaller where one of the figures on a line of its own would be wider than `width`, but
    /// not below `least` of its size. Digits count as wide as the widest of them.
    Q_INVOKABLE [[nodiscard]] static QFont fitted(const QFont& font, const QStringList& figures, qreal width,
                                                  qreal least);

    /// The figure, with an ellipsis in place of what does not fit.
    Q_INVOKABLE [[nodiscard]] static QString elided(const QString& figure, const QFont& font, qreal width);

    /// The first of the round faces that are good for figures among the families; empty for none. Pure.
    [[nodiscard]] static QString roundFace(const QStringList& families);

    [[nodiscard]] QFont title() const { return styled(22, QFont::Normal); }

    [[nodiscard]] QFont titleBold() const { return styled(22, QFont::Bold); }

    [[nodiscard]] QFont title2Bold() const { return styled(17, QFont::Bold); }

    [[nodiscard]] QFont title2Figure() const { return styled(17, QFont::DemiBold); }

    [[nodiscard]] QFont headline() const { return styled(13, QFont::DemiBold); }

    [[nodiscard]] QFont body() const { return styled(13, QFont::Normal); }

    [[nodiscard]] QFont bodyMedium() const { return styled(13, QFont::Medium); }

    [[nodiscard]] QFont callout() const { return styled(12, QFont::Normal); }

    [[nodiscard]] QFont calloutMedium() const { return styled(12, QFont::Medium); }

    [[nodiscard]] QFont caption() const { return styled(10, QFont::Normal); }

    [[nodiscard]] QFont monospace() const;
    [[nodiscard]] QFont hero() const;
    [[nodiscard]] QFont heroQuiet() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void colorsChanged();
    void fontsChanged();
    void reducedMotionChanged();
    void compositedChanged();
    void displayChanged();
    void minimisableChanged();
    void mirroredChanged();

private:
    [[nodiscard]] QFont styled(double size, QFont::Weight weight) const;
    void rebuild();

    Palette _palette;
    QFont _base;
    QColor _accent;
    bool _dark = false;
    bool _highContrast = false;
    bool _reducedMotion = false;
    bool _composited = false;
    bool _minimisable = true;
    int _displayHeight = 0;
    int _displayWidth = 0;
};

/// Makes the names of the tints known to QML.
namespace TintsForQml {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(ferrobank::Tints)
QML_NAMED_ELEMENT(Tints)
} // namespace TintsForQml

} // namespace ferrobank
