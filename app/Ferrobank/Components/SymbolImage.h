#pragma once

#include <QtGui/QColor>
#include <QtQml/qqmlregistration.h>
#include <QtQuick/QQuickPaintedItem>

namespace ferrobank {

/// One of our symbol drawings (Resources/symbols/<name>.svg), drawn anew for every size and scale. In the
/// drawings "currentColor" stands for the symbol's one colour and "cutColor" for what is cut out of it. A
/// name without a drawing shows nothing and is reported as a warning.
class SymbolImage : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged REQUIRED)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

public:
    explicit SymbolImage(QQuickItem* parent = nullptr);

    [[nodiscard]] QString name() const { return _name; }

    void setName(const QString& name);

    [[nodiscard]] QColor color() const { return _color; }

    void setColor(const QColor& color);

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void nameChanged();
    void colorChanged();

private:
    QString _name;
    QColor _color = Qt::black;
};

} // namespace ferrobank
