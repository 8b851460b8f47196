#include "Ferrobank/Components/SymbolImage.h"

#include <QtCore/QFile>
#include <QtGui/QPainter>
#include <QtSvg/QSvgRenderer>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

// The drawings are black; one replacement of the word gives them any colour, so that no pixel is composed twice
// and the edges stay crisp.
QByteArray drawing(const QString& name, const QColor& color)
{
    QFile file(u":/symbols/%1.svg"_s.arg(name));
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning("There is no symbol named %s", qPrintable(name));
        return {};
    }
    QByteArray svg = file.readAll();
    svg.replace("currentColor", color.name(QColor::HexRgb).toLatin1());
    return svg;
}

} // namespace

SymbolImage::SymbolImage(QQuickItem* parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    setImplicitSize(16, 16);
}

void SymbolImage::setName(const QString& name)
{
    if (_name != name) {
        _name = name;
        Q_EMIT nameChanged();
        update();
    }
}

void SymbolImage::setColor(const QColor& color)
{
    if (_color != color) {
        _color = color;
        Q_EMIT colorChanged();
        update();
    }
}

void SymbolImage::paint(QPainter* painter)
{
    if (_name.isEmpty()) {
        return;
    }
    QSvgRenderer renderer(drawing(_name, _color));
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setOpacity(_color.alphaF());
    const qreal side = qMin(width(), height());
    renderer.render(painter, QRectF((width() - side) / 2, (height() - side) / 2, side, side));
}

} // namespace ferrobank
