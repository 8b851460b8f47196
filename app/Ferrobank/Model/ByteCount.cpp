#include "Ferrobank/Model/ByteCount.h"

#include <array>
#include <limits>

using namespace Qt::StringLiterals;

namespace ferrobank {

namespace {

/// A unit and how finely its numbers are written: `step` bytes are one in the last fraction digit.
struct Unit {
    char16_t prefix;
    quint64 bytes;
    quint64 step;
    int fractionDigits;
};

constexpr quint64 kThousand = 1000;

constexpr std::array<Unit, 6> kUnits{{
    {u'K', 1'000, 1'000, 0},
    {u'M', 1'000'000, 100'000, 1},
    {u'G', 1'000'000'000, 10'000'000, 2},
    {u'T', 1'000'000'000'000, 10'000'000'000, 2},
    {u'P', 1'000'000'000'000'000, 10'000'000'000'000, 2},
    {u'E', 1'000'000'000'000'000'000, 10'000'000'000'000'000, 2},
}};

bool countsInOctets(const QLocale& locale)
{
    return locale.language() == QLocale::French;
}

QString plainBytes(quint64 bytes, const QLocale& locale)
{
    QString unit = countsInOctets(locale) ? u"octet"_s : u"byte"_s;
    if (bytes != 1) {
        unit += u's';
    }
    return locale.toString(bytes) + u' ' + unit;
}

QString scaledBytes(quint64 bytes, const QLocale& locale)
{
    // Integers all the way: the digits are exact. The largest unit takes whatever is left.
    quint64 steps = 0;
    const Unit* chosen = kUnits.data();
    for (const Unit& unit : kUnits) {
        chosen = &unit;
        steps = bytes / unit.step + (bytes % unit.step >= unit.step - unit.step / 2 ? 1 : 0);
        if (steps < kThousand * (unit.bytes / unit.step)) {
            break;
        }
    }
    const quint64 perUnit = chosen->bytes / chosen->step;
    QString text = locale.toString(steps / perUnit);
    QString fraction = QString::number(steps % perUnit).rightJustified(chosen->fractionDigits, u'0');
    while (fraction.endsWith(u'0')) {
        fraction.chop(1);
    }
    if (!fraction.isEmpty()) {
        text += locale.decimalPoint();
        for (const QChar digit : std::as_const(fraction)) {
            text += locale.toString(digit.digitValue());
        }
    }
    return text + u' ' + QChar(chosen->prefix) + (countsInOctets(locale) ? u'o' : u'B');
}

QString magnitude(quint64 bytes, const QLocale& locale)
{
    return bytes < kThousand ? plainBytes(bytes, locale) : scaledBytes(bytes, locale);
}

} // namespace

QString byteCount(qint64 bytes, const QLocale& locale)
{
    if (bytes >= 0) {
        return magnitude(static_cast<quint64>(bytes), locale);
    }
    // Unsigned negation is defined for the lowest number too.
    return locale.negativeSign() + magnitude(quint64{0} - static_cast<quint64>(bytes), locale);
}

QString byteCount(quint64 bytes, const QLocale& locale)
{
    if (bytes > static_cast<quint64>(std::numeric_limits<qint64>::max())) {
        qFatal("A byte count of %llu is above the signed range", static_cast<unsigned long long>(bytes));
    }
    return magnitude(bytes, locale);
}

QString byteCountOrDash(std::optional<quint64> bytes, const QLocale& locale)
{
    return bytes ? byteCount(*bytes, locale) : u"—"_s;
}

} // namespace ferrobank
