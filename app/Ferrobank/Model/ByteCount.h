#pragma once

#include <QtCore/QLocale>
#include <QtCore/QString>

#include <optional>

namespace ferrobank {

/// A count of bytes as people read it. Pure.
///
/// Decimal units (1 KB is 1000 bytes), the unit chosen so that the rounded number stays below 1000; no
/// fraction for KB, at most one digit for MB, at most two above, without trailing zeros; halves are rounded
/// away from zero. Zero is "0 bytes". Separators and digits are the locale's; in French the units are octets.
[[nodiscard]] QString byteCount(qint64 bytes, const QLocale& locale = QLocale());

/// The same for the drive tool's figures. A count above 2^63 - 1 is a programming fault and stops the
/// program.
[[nodiscard]] QString byteCount(quint64 bytes, const QLocale& locale = QLocale());

/// The same, or an em dash for a figure that is not known.
[[nodiscard]] QString byteCountOrDash(std::optional<quint64> bytes, const QLocale& locale = QLocale());

} // namespace ferrobank
