#pragma once

#include <QtCore/QBasicTimer>
#include <QtGui/QColor>
#include <QtQml/qqmlregistration.h>
#include <QtQuick/QQuickPaintedItem>

namespace ferrobank {

/// Twelve spokes that take turns. Steps ten times a second and only while it can be seen and is `running`;
/// otherwise no timer exists, so a hidden spinner costs nothing.
class SpinnerDrawing : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool running READ isRunning WRITE setRunning NOTIFY runningChanged)
    Q_PROPERTY(bool stepping READ isStepping NOTIFY steppingChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

public:
    explicit SpinnerDrawing(QQuickItem* parent = nullptr);

    [[nodiscard]] bool isRunning() const { return _running; }

    void setRunning(bool running);

    [[nodiscard]] QColor color() const { return _color; }

    void setColor(const QColor& color);

    /// Whether it steps at this moment.
    [[nodiscard]] bool isStepping() const { return _timer.isActive(); }

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void runningChanged();
    void steppingChanged();
    void colorChanged();

protected:
    void timerEvent(QTimerEvent* event) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;

private:
    void settle();

    QBasicTimer _timer;
    QMetaObject::Connection _windowVisibility;
    QColor _color = Qt::gray;
    int _step = 0;
    bool _running = true;
};

} // namespace ferrobank
