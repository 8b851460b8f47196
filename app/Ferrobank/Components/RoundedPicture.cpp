#include "Ferrobank/Components/RoundedPicture.h"

#include <QtGui/QPainter>
#include <QtGui/QPainterPath>

#include <algorithm>
#include <array>
#include <numbers>

namespace ferrobank {

namespace {

/// How far along an edge a corner begins, in radii. With 1 it would be the quarter of a circle.
constexpr qreal kReach = 1.6;

/// A corner's curve along an edge: where it begins and its control point, both from the corner. It runs
/// through the middle of the circle's quarter, however far it reaches.
struct Reach {
    qreal begin;
    qreal control;

    Reach(qreal radius, qreal room)
        : begin(std::min(kReach * radius, room)),
          control((8 * (1 - std::numbers::sqrt2 / 2) * radius - begin) / 3)
    {}
};

QPainterPath outline(const QRectF& box, qreal wantedRadius)
{
    QPainterPath path;
    const qreal radius = std::min({wantedRadius, box.width() / 2, box.height() / 2});
    if (radius <= 0) {
        path.addRect(box);
        return path;
    }
    const Reach reach(radius, std::min(box.width(), box.height()) / 2);

    struct Corner {
        QPointF at;
        qreal right; ///< 1 when the box lies to the right of it
        qreal below;
    };

    const std::array corners{
        Corner{box.topLeft(), 1, 1},
        Corner{box.topRight(), -1, 1},
        Corner{box.bottomRight(), -1, -1},
        Corner{box.bottomLeft(), 1, -1},
    };
    bool arrivesVertically = true;
    for (const Corner& corner : corners) {
        const auto onSide = [&corner](qreal length) { return corner.at + QPointF(0, corner.below * length); };
        const auto onEdge = [&corner](qreal length) { return corner.at + QPointF(corner.right * length, 0); };
        const QPointF begin = arrivesVertically ? onSide(reach.begin) : onEdge(reach.begin);
        if (path.isEmpty()) {
            path.moveTo(begin);
        } else {
            path.lineTo(begin);
        }
        if (arrivesVertically) {
            path.cubicTo(onSide(reach.control), onEdge(reach.control), onEdge(reach.begin));
        } else {
            path.cubicTo(onEdge(reach.control), onSide(reach.control), onSide(reach.begin));
        }
        arrivesVertically = !arrivesVertically;
    }
    path.closeSubpath();
    return path;
}

/// Below this a length is a line's, which looks the same wherever it lies.
constexpr qreal kThin = 4;

/// The pixels between two ends, to which the ends of other boxes in the same place are rounded too.
int pixels(qreal begin, qreal length, qreal scale)
{
    const int between = qRound((begin + length) * scale) - qRound(begin * scale);
    return std::max(1, length < kThin ? qRound(length * scale) : between);
}

/// The pixels that the box covers; one that is as wide as high stays so.
QRect pixels(QPointF origin, QSizeF size, qreal scale)
{
    const int width = pixels(origin.x(), size.width(), scale);
    const bool square = qFuzzyCompare(size.width(), size.height());
    const int height = square ? width : pixels(origin.y(), size.height(), scale);
    return {qRound(origin.x() * scale), qRound(origin.y() * scale), width, height};
}

} // namespace

PlacedPicture roundedPicture(const RoundedShape& shape, QPointF origin, QSizeF size, qreal scale)
{
    if (size.isEmpty()) {
        return {};
    }
    const QRect covered = pixels(origin, size, scale);
    PlacedPicture picture{
        .image = QImage(covered.size(), QImage::Format_ARGB32_Premultiplied),
        .place = QRectF(QPointF(covered.topLeft()) / scale - origin, QSizeF(covered.size()) / scale)};
    picture.image.fill(Qt::transparent);
    QPainter painter(&picture.image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF box(QPointF(), QSizeF(covered.size()));
    const qreal radius = shape.radius * scale;
    if (shape.borderWidth <= 0) {
        painter.fillPath(outline(box, radius), shape.color);
        return picture;
    }
    const qreal line = std::max(1, qRound(shape.borderWidth * scale));
    painter.fillPath(outline(box, radius), shape.borderColor);
    // In its place and not over it: either may be translucent.
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillPath(outline(box.adjusted(line, line, -line, -line), std::max(0.0, radius - line)),
                     shape.color);
    return picture;
}

} // namespace ferrobank
