#include "Ferrobank/Diagnostics/PrivateWords.h"

#include <QtCore/QRegularExpression>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

void replaceName(QString& text, const QString& name, const QString& by)
{
    if (name.isEmpty()) {
        return;
    }
    const QRegularExpression whole(u"(?<![\\w-])%1(?![\\w-])"_s.arg(QRegularExpression::escape(name)),
                                   QRegularExpression::UseUnicodePropertiesOption);
    text.replace(whole, by);
}

} // namespace

QString withoutPrivateWords(QString text, const PrivateWords& words)
{
    QString home = words.home;
    while (home.endsWith(u'/')) {
        home.chop(1);
    }
    if (!home.isEmpty()) {
        const QRegularExpression path(u"%1(?![^/\\s\"'’”,:;()])"_s.arg(QRegularExpression::escape(home)));
        text.replace(path, u"~"_s);
    }
    replaceName(text, words.host, u"HOST"_s);
    replaceName(text, words.host.section(u'.', 0, 0), u"HOST"_s);
    replaceName(text, words.user, u"USER"_s);
    return text;
}

} // namespace ferrobank
