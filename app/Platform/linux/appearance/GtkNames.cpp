#include "Platform/linux/appearance/GtkNames.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

bool isStyleWord(const QString& word)
{
    static const QStringList words{u"thin"_s,       u"ultra-light"_s, u"extra-light"_s, u"light"_s,
                                   u"semi-light"_s, u"demi-light"_s,  u"book"_s,        u"regular"_s,
                                   u"normal"_s,     u"medium"_s,      u"semi-bold"_s,   u"demi-bold"_s,
                                   u"bold"_s,       u"ultra-bold"_s,  u"extra-bold"_s,  u"heavy"_s,
                                   u"black"_s,      u"italic"_s,      u"oblique"_s,     u"roman"_s};
    return words.contains(word, Qt::CaseInsensitive);
}

} // namespace

std::optional<GtkFont> gtkFont(const QString& name)
{
    QStringList words = name.simplified().split(u' ', Qt::SkipEmptyParts);
    GtkFont font;
    if (!words.isEmpty()) {
        bool isNumber = false;
        const double size = words.constLast().toDouble(&isNumber);
        if (isNumber && size > 0 && size < 200) {
            font.size = size;
            words.removeLast();
        }
    }
    while (words.size() > 1 && isStyleWord(words.constLast())) {
        words.removeLast();
    }
    font.family = words.join(u' ');
    if (font.family.endsWith(u',')) {
        font.family.chop(1);
    }
    return font.family.isEmpty() ? std::nullopt : std::optional(font);
}

bool isDarkGtkTheme(const QString& name)
{
    // As a word or the end of one: "Adwaita-dark", "Mint-Y-Dark-Aqua", "Adwaita:dark"; MATE's are "BlackMATE"
    // and the like.
    static const QRegularExpression dark(u"(^|[-_: ])(dark|night)($|[-_: ])|dark$|^black|inverse"_s,
                                         QRegularExpression::CaseInsensitiveOption);
    return dark.match(name).hasMatch();
}

bool isHighContrastGtkTheme(const QString& name)
{
    return name.startsWith("HighContrast"_L1, Qt::CaseInsensitive) ||
           name.startsWith("ContrastHigh"_L1, Qt::CaseInsensitive);
}

} // namespace ferrobank
