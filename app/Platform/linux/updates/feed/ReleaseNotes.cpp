#include "Platform/linux/updates/feed/ReleaseNotes.h"

#include <QtCore/QRegularExpression>

namespace ferrobank::updates {
namespace {

using namespace Qt::StringLiterals;

constexpr qsizetype kMostCharacters = 20'000;

QString withoutTags(QString html)
{
    static const QRegularExpression hidden(u"<!--.*?(-->|$)|<(script|style|head|title)\\b.*?(</\\2\\s*>|$)"_s,
                                           QRegularExpression::DotMatchesEverythingOption |
                                               QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression listItem(u"<li\\b[^>]*>"_s, QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression lineEnd(u"<br\\b[^>]*>|</(p|div|h[1-6]|li|ul|ol|tr|pre)\\s*>"_s,
                                            QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression anyTag(u"<[^>]*(>|$)"_s);
    static const QRegularExpression white(u"\\s+"_s);

    html.remove(hidden);
    html.replace(white, u" "_s);
    html.replace(listItem, u"\u2022 "_s);
    html.replace(lineEnd, u"\n"_s);
    html.remove(anyTag);
    // "&amp;" last, or it would turn "&amp;lt;" into a tag's bracket.
    html.replace(u"&lt;"_s, u"<"_s).replace(u"&gt;"_s, u">"_s).replace(u"&quot;"_s, u"\""_s);
    html.replace(u"&apos;"_s, u"'"_s).replace(u"&nbsp;"_s, u" "_s).replace(u"&amp;"_s, u"&"_s);
    return html;
}

bool isHarmless(QChar c)
{
    if (c == u'\n' || c == u'\t')
        return true;
    const bool turnsDirection = (c >= u'\u202a' && c <= u'\u202e') || (c >= u'\u2066' && c <= u'\u2069');
    return c.category() != QChar::Other_Control && !turnsDirection;
}

} // namespace

QString notesAsText(const QString& notes, NotesFormat format)
{
    const QString source = format == NotesFormat::Html ? withoutTags(notes) : notes;
    QString text;
    for (const QString& line : QString(source).replace(u"\r\n"_s, u"\n"_s).split(u'\n')) {
        for (const QChar c : line) {
            if (isHarmless(c))
                text += c;
        }
        while (text.endsWith(u' ') || text.endsWith(u'\t'))
            text.chop(1);
        text += u'\n';
        if (text.size() > kMostCharacters) {
            text.truncate(kMostCharacters);
            text += u"…"_s;
            break;
        }
    }
    static const QRegularExpression emptyLines(u"\\n{3,}"_s);
    return text.replace(emptyLines, u"\n\n"_s).trimmed();
}

} // namespace ferrobank::updates
