#include "Ferrobank/Components/RoundedBox.h"

#include <QtQuick/QQuickWindow>
#include <QtQuick/QSGImageNode>

namespace ferrobank {

RoundedBox::RoundedBox(QQuickItem* parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

void RoundedBox::setShape(const RoundedShape& shape)
{
    if (_shape != shape) {
        _shape = shape;
        Q_EMIT shapeChanged();
        update();
    }
}

void RoundedBox::setColor(const QColor& color)
{
    RoundedShape shape = _shape;
    shape.color = color;
    setShape(shape);
}

void RoundedBox::setBorderColor(const QColor& color)
{
    RoundedShape shape = _shape;
    shape.borderColor = color;
    setShape(shape);
}

void RoundedBox::setRadius(qreal radius)
{
    RoundedShape shape = _shape;
    shape.radius = radius;
    setShape(shape);
}

void RoundedBox::setBorderWidth(qreal width)
{
    RoundedShape shape = _shape;
    shape.borderWidth = width;
    setShape(shape);
}

QSGNode* RoundedBox::updatePaintNode(QSGNode* old, UpdatePaintNodeData* /*data*/)
{
    const PlacedPicture picture =
        roundedPicture(_shape, mapToScene({}), size(), window()->effectiveDevicePixelRatio());
    if (picture.image.isNull()) {
        delete old;
        return nullptr;
    }
    auto* node = static_cast<QSGImageNode*>(old);
    if (node == nullptr) {
        node = window()->createImageNode();
        node->setOwnsTexture(true);
        // One to one where it was drawn for; smooth while something scrolls it off the pixels.
        node->setFiltering(QSGTexture::Linear);
    }
    node->setTexture(window()->createTextureFromImage(picture.image, QQuickWindow::TextureHasAlphaChannel));
    node->setSourceRect(QRectF(QPointF(), QSizeF(picture.image.size())));
    node->setRect(picture.place);
    return node;
}

void RoundedBox::geometryChange(const QRectF& now, const QRectF& before)
{
    QQuickItem::geometryChange(now, before);
    update();
}

void RoundedBox::itemChange(ItemChange change, const ItemChangeData& data)
{
    QQuickItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged) {
        update();
    }
}

} // namespace ferrobank
