#include "Platform/linux/workspace/IconImage.h"

#include <QtCore/QtEndian>

namespace ferrobank {

namespace {

constexpr qsizetype kHeader = 8;
constexpr quint32 kLargest = 512;
constexpr qsizetype kWidthInPng = 16; ///< offset of the picture's width
const QByteArray kPng = QByteArray::fromHex("89504e470d0a1a0a");

quint32 numberAt(const QByteArray& bytes, qsizetype offset)
{
    return qFromBigEndian<quint32>(bytes.constData() + offset);
}

bool suitsBetter(quint32 width, quint32 than)
{
    if (than == 0) {
        return true;
    }
    const bool fits = width <= kLargest;
    const bool otherFits = than <= kLargest;
    if (fits != otherFits) {
        return fits;
    }
    return fits ? width > than : width < than;
}

} // namespace

QByteArray pngInIcon(const QByteArray& icns)
{
    if (icns.size() < kHeader || !icns.startsWith("icns") || numberAt(icns, 4) > icns.size()) {
        return {};
    }
    QByteArray best;
    quint32 bestWidth = 0;
    const qsizetype end = numberAt(icns, 4);
    for (qsizetype at = kHeader; at + kHeader <= end;) {
        const qsizetype length = numberAt(icns, at + 4);
        if (length < kHeader || length > end - at) {
            return {};
        }
        const QByteArray data = icns.mid(at + kHeader, length - kHeader);
        if (data.startsWith(kPng) && data.size() >= kWidthInPng + 4) {
            const quint32 width = numberAt(data, kWidthInPng);
            if (width > 0 && suitsBetter(width, bestWidth)) {
                best = data;
                bestWidth = width;
            }
        }
        at += length;
    }
    return best;
}

} // namespace ferrobank
