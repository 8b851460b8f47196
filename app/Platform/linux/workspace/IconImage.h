#pragma once

#include <QtCore/QByteArray>

namespace ferrobank {

/// The picture in an icon file (".icns") that suits a folder best: the largest PNG of at most 512 pixels, or
/// else the smallest one. Empty when the bytes are no icon file or hold no PNG. Pure.
///
/// The format: "icns", the file's length, then entries of a four-letter type, their length with these eight
/// bytes, and data; lengths are 32 bits, most significant byte first.
[[nodiscard]] QByteArray pngInIcon(const QByteArray& icns);

} // namespace ferrobank
