#include "Ferrobank/Components/FigureDocument.h"

#include <QtCore/QScopedValueRollback>
#include <QtGui/QFontMetricsF>
#include <QtGui/QTextCursor>
#include <QtGui/QTextDocument>

#include <algorithm>
#include <array>
#include <cmath>

namespace ferrobank {

namespace {

/// Less than this is how faces round, and nobody sees it.
constexpr qreal kSame = 0.01;

using Advances = std::array<qreal, 10>;

Advances advances(const QFont& font)
{
    const QFontMetricsF metrics(font);
    Advances each{};
    for (std::size_t digit = 0; digit < each.size(); ++digit) {
        each.at(digit) = metrics.horizontalAdvance(QChar(u'0' + char16_t(digit)));
    }
    return each;
}

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

} // namespace

void FigureDocument::setDocument(QQuickTextDocument* document)
{
    if (_document == document) {
        return;
    }
    if (_document != nullptr) {
        disconnect(_document->textDocument(), nullptr, this, nullptr);
    }
    _document = document;
    if (_document != nullptr) {
        connect(_document->textDocument(), &QTextDocument::contentsChanged, this, &FigureDocument::space);
    }
    space();
    Q_EMIT documentChanged();
}

void FigureDocument::setFont(const QFont& font)
{
    if (_font != font) {
        _font = font;
        space();
        Q_EMIT fontChanged();
    }
}

qreal FigureDocument::width(const QString& text, const QFont& font)
{
    const Advances each = advances(font);
    const qreal widest = std::ranges::max(each);
    qreal more = 0;
    for (const QChar character : text) {
        if (isDigit(character)) {
            more += widest - each.at(std::size_t(character.unicode() - u'0'));
        }
    }
    return std::ceil(QFontMetricsF(font).horizontalAdvance(text) + more);
}

void FigureDocument::space()
{
    if (_document == nullptr || _spacing) {
        return;
    }
    const Advances each = advances(_font);
    const qreal widest = std::ranges::max(each);
    if (widest - std::ranges::min(each) < kSame) {
        return;
    }
    const QScopedValueRollback spacing(_spacing, true);
    QTextDocument& document = *_document->textDocument();
    QTextCursor cursor(&document);
    const QString text = document.toPlainText();
    for (qsizetype place = 0; place < text.size(); ++place) {
        if (!isDigit(text.at(place))) {
            continue;
        }
        QTextCharFormat format;
        format.setFontLetterSpacingType(QFont::AbsoluteSpacing);
        format.setFontLetterSpacing(widest - each.at(std::size_t(text.at(place).unicode() - u'0')));
        cursor.setPosition(int(place));
        cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
        cursor.mergeCharFormat(format);
    }
}

} // namespace ferrobank
