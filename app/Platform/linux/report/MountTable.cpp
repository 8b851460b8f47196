#include "Platform/linux/report/MountTable.h"

#include <QtCore/QFile>
#include <QtCore/QList>

#include <algorithm>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kPlace = 4;
constexpr qsizetype kOptions = 5;
constexpr qsizetype kFirstOptionalField = 6;
constexpr qsizetype kFieldsBehindTheDash = 3;

bool isOctal(char digit)
{
    return digit >= '0' && digit <= '7';
}

// Space, tab, line break and backslash are written as a backslash and three octal digits.
QByteArray unescaped(const QByteArray& field)
{
    QByteArray text;
    for (qsizetype at = 0; at < field.size(); ++at) {
        const bool isEscape = field[at] == '\\' && at + 3 < field.size() && isOctal(field[at + 1]) &&
                              isOctal(field[at + 2]) && isOctal(field[at + 3]);
        if (isEscape) {
            text += char((field[at + 1] - '0') * 64 + (field[at + 2] - '0') * 8 + (field[at + 3] - '0'));
            at += 3;
        } else {
            text += field[at];
        }
    }
    return text;
}

} // namespace

QString mountLineOf(const QByteArray& mountinfo, const QString& mountpoint)
{
    if (mountpoint.isEmpty()) {
        return {};
    }
    const QByteArray wanted = QFile::encodeName(mountpoint);
    QString found;
    for (const QByteArray& line : mountinfo.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype dash = fields.indexOf("-", std::min(kFirstOptionalField, fields.size()));
        if (dash < 0 || fields.size() <= dash + kFieldsBehindTheDash || unescaped(fields[kPlace]) != wanted) {
            continue;
        }
        found = u"%1 %2 %3 %4,%5"_s.arg(
            QFile::decodeName(unescaped(fields[dash + 2])), mountpoint, QString::fromUtf8(fields[dash + 1]),
            QString::fromUtf8(fields[kOptions]), QString::fromUtf8(fields[dash + 3]));
    }
    return found;
}

} // namespace ferrobank
