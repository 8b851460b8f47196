#pragma once

#include <QtGui/QColor>
#include <QtGui/QImage>

namespace ferrobank {

/// A filled box with rounded corners and a border inside its edge; lengths in device-independent pixels.
struct RoundedShape {
    QColor color = Qt::white;
    QColor borderColor = Qt::black;
    qreal radius = 0;
    qreal borderWidth = 0;

    bool operator==(const RoundedShape&) const = default;
};

/// A picture and where it goes, in the coordinates of the box that it shows.
struct PlacedPicture {
    QImage image;
    QRectF place;
};

/// Draws the box on whole pixels of the screen, whatever the scale: its edges and its border are as sharp at
/// 125 % as at 100 %, and a line is never thinner than a pixel. `origin` is the box's place in the window,
/// `scale` the pixels per device-independent pixel. The corners set out along the edges before they turn, so
/// that the outline has no visible joint, where there is room for that; the ends of a capsule are circles.
/// Empty for an empty size.
[[nodiscard]] PlacedPicture roundedPicture(const RoundedShape& shape, QPointF origin, QSizeF size,
                                           qreal scale);

} // namespace ferrobank
