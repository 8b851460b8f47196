#pragma once

#include "Ferrobank/Components/RoundedPicture.h"

#include <QtQml/qqmlregistration.h>
#include <QtQuick/QQuickItem>

namespace ferrobank {

/// The ground of everything that has round corners. The toolkit's own rectangle puts its corners together
/// from pieces, which show at scales like 125 %; this one is drawn as a whole for the pixels that it lies on.
class RoundedBox : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY shapeChanged FINAL)
    Q_PROPERTY(QColor borderColor READ borderColor WRITE setBorderColor NOTIFY shapeChanged FINAL)
    Q_PROPERTY(qreal radius READ radius WRITE setRadius NOTIFY shapeChanged FINAL)
    Q_PROPERTY(qreal borderWidth READ borderWidth WRITE setBorderWidth NOTIFY shapeChanged FINAL)

public:
    explicit RoundedBox(QQuickItem* parent = nullptr);

    [[nodiscard]] QColor color() const { return _shape.color; }

    void setColor(const QColor& color);

    [[nodiscard]] QColor borderColor() const { return _shape.borderColor; }

    void setBorderColor(const QColor& color);

    [[nodiscard]] qreal radius() const { return _shape.radius; }

    void setRadius(qreal radius);

    [[nodiscard]] qreal borderWidth() const { return _shape.borderWidth; }

    void setBorderWidth(qreal width);

Q_SIGNALS:
    void shapeChanged();

protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;

private:
    void setShape(const RoundedShape& shape);

    RoundedShape _shape;
};

} // namespace ferrobank
