#include "Ferrobank/Components/SpinnerDrawing.h"

#include <QtCore/QTimerEvent>
#include <QtGui/QPainter>
#include <QtQuick/QQuickWindow>

namespace ferrobank {

namespace {

constexpr int kSpokes = 12;
constexpr int kStepMilliseconds = 100;
constexpr double kFaintest = 0.18;

} // namespace

SpinnerDrawing::SpinnerDrawing(QQuickItem* parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    setImplicitSize(16, 16);
}

void SpinnerDrawing::setRunning(bool running)
{
    if (_running != running) {
        _running = running;
        settle();
        Q_EMIT runningChanged();
    }
}

void SpinnerDrawing::setColor(const QColor& color)
{
    if (_color != color) {
        _color = color;
        update();
        Q_EMIT colorChanged();
    }
}

void SpinnerDrawing::itemChange(ItemChange change, const ItemChangeData& data)
{
    QQuickPaintedItem::itemChange(change, data);
    if (change == ItemSceneChange) {
        disconnect(_windowVisibility);
        if (data.window != nullptr) {
            _windowVisibility =
                connect(data.window, &QWindow::visibilityChanged, this, &SpinnerDrawing::settle);
        }
    }
    if (change == ItemSceneChange || change == ItemVisibleHasChanged) {
        settle();
    }
}

void SpinnerDrawing::settle()
{
    const auto* scene = window();
    const bool seen =
        isVisible() && scene != nullptr && scene->isVisible() && scene->visibility() != QWindow::Minimized;
    const bool steps = _running && seen;
    if (steps == _timer.isActive()) {
        return;
    }
    if (steps) {
        _timer.start(kStepMilliseconds, Qt::CoarseTimer, this);
    } else {
        _timer.stop();
    }
    Q_EMIT steppingChanged();
}

void SpinnerDrawing::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != _timer.timerId()) {
        QQuickPaintedItem::timerEvent(event);
        return;
    }
    _step = (_step + 1) % kSpokes;
    update();
}

void SpinnerDrawing::paint(QPainter* painter)
{
    const qreal side = qMin(width(), height());
    painter->setRenderHint(QPainter::Antialiasing);
    painter->translate(width() / 2, height() / 2);
    for (int spoke = 0; spoke < kSpokes; ++spoke) {
        const int age = (_step - spoke + kSpokes) % kSpokes;
        QColor color = _color;
        color.setAlphaF(float(qMax(kFaintest, 1.0 - age / double(kSpokes - 1))));
        painter->setPen(QPen(color, side * 0.095, Qt::SolidLine, Qt::RoundCap));
        painter->save();
        painter->rotate(spoke * 360.0 / kSpokes);
        painter->drawLine(QPointF(0, -side * 0.25), QPointF(0, -side * 0.43));
        painter->restore();
    }
}

} // namespace ferrobank
