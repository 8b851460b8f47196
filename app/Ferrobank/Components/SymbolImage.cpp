#include "Ferrobank/Components/SymbolImage.h"

#include <QtCore/QFile>
#include <QtGui/QPainter>
#include <QtSvg/QSvgRenderer>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

constexpr QByteArrayView kShape = "currentColor";
constexpr QByteArrayView kCut = "cutColor";
constexpr QByteArrayView kNothing = "none";

QByteArray drawing(const QString& name)
{
    QFile file(u":/symbols/%1.svg"_s.arg(name));
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning("There is no symbol named %s", qPrintable(name));
        return {};
    }
    return file.readAll();
}

void draw(QPainter& painter, QByteArray svg, const QRectF& place, QByteArrayView shape, QByteArrayView cut)
{
    QSvgRenderer renderer(svg.replace(kShape, shape).replace(kCut, cut));
    renderer.render(&painter, place);
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
    const QByteArray svg = drawing(_name);
    const qreal side = qMin(width(), height());
    const QRectF place((width() - side) / 2, (height() - side) / 2, side, side);
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setOpacity(_color.alphaF());
    draw(*painter, svg, place, _color.name(QColor::HexRgb).toLatin1(), kNothing);
    if (svg.contains(kCut)) {
        // What is cut out shows the ground, whatever that is.
        painter->setOpacity(1);
        painter->setCompositionMode(QPainter::CompositionMode_DestinationOut);
        draw(*painter, svg, place, kNothing, "black");
    }
}

} // namespace ferrobank
