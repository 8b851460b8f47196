#include "Ferrobank/Components/RoundedPicture.h"

#include "support/TestProgram.h"

#include <QtCore/QtMath>
#include <QtTest/QTest>

using namespace ferrobank;
using namespace Qt::StringLiterals;

namespace {

constexpr QSizeF kButton(96, 30);
constexpr QSizeF kKnob(18, 18);

RoundedShape filled(qreal radius)
{
    return {.color = Qt::blue, .borderColor = Qt::black, .radius = radius, .borderWidth = 0};
}

/// Whether nothing but the corners is see-through, and no line of another colour runs through the inside.
bool isWhole(const QImage& image, int corner)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const bool inCorner =
                std::min(x, image.width() - 1 - x) < corner && std::min(y, image.height() - 1 - y) < corner;
            if (!inCorner && image.pixelColor(x, y) != QColor(Qt::blue)) {
                return false;
            }
        }
    }
    return true;
}

/// The painter's edges differ a little from side to side.
bool isNearly(const QImage& one, const QImage& other)
{
    constexpr int kShades = 24;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            if (qAbs(one.pixelColor(x, y).alpha() - other.pixelColor(x, y).alpha()) > kShades) {
                return false;
            }
        }
    }
    return one.size() == other.size();
}

void addScales()
{
    QTest::addColumn<qreal>("scale");
    for (const qreal scale : {1.0, 1.25, 1.5, 1.75, 2.0, 2.25, 3.0}) {
        QTest::addRow("%d %%", qRound(scale * 100)) << scale;
    }
}

} // namespace

class RoundedPictureTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void isOfOnePieceAndTheSameInAllCorners_data() { addScales(); }

    void isOfOnePieceAndTheSameInAllCorners()
    {
        QFETCH(const qreal, scale);
        const QImage image = roundedPicture(filled(7), {13, 21}, kButton, scale).image;
        QVERIFY(isWhole(image, qCeil(7 * 1.6 * scale)));
        QVERIFY(isNearly(image, image.mirrored(true, false)));
        QVERIFY(isNearly(image, image.mirrored(false, true)));
        QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
    }

    void liesOnWholePixels_data() { addScales(); }

    void liesOnWholePixels()
    {
        QFETCH(const qreal, scale);
        const QPointF origin(13.3, 20.7);
        const PlacedPicture picture = roundedPicture(filled(7), origin, kButton, scale);
        const QPointF corner = (origin + picture.place.topLeft()) * scale;
        QVERIFY(qAbs(corner.x() - qRound(corner.x())) < 1e-6);
        QVERIFY(qAbs(corner.y() - qRound(corner.y())) < 1e-6);
        const QSizeF size = picture.place.size() * scale;
        QVERIFY(qAbs(size.width() - picture.image.width()) < 1e-6);
        QVERIFY(qAbs(size.height() - picture.image.height()) < 1e-6);
        QVERIFY(qAbs(picture.place.width() - kButton.width()) <= 1 / scale);
    }

    void circleStaysOneWhereverItLies()
    {
        for (int step = 0; step < 20; ++step) {
            const QImage image = roundedPicture(filled(9), {step * 0.3, 5.1}, kKnob, 1.25).image;
            QCOMPARE(image.width(), image.height());
            QVERIFY(isNearly(image, image.mirrored(true, false)));
        }
    }

    void capsuleEndsInHalfCircles()
    {
        const QImage image = roundedPicture(filled(11), {}, {38, 22}, 4).image;
        for (int degrees = 90; degrees <= 270; degrees += 10) {
            const QPointF outward(qCos(qDegreesToRadians(degrees)), qSin(qDegreesToRadians(degrees)));
            const QPoint outside = (QPointF(43.5, 43.5) + outward * 46).toPoint();
            const QPoint inside = (QPointF(43.5, 43.5) + outward * 42).toPoint();
            QVERIFY(!image.rect().contains(outside) || image.pixelColor(outside).alpha() == 0);
            QCOMPARE(image.pixelColor(inside), QColor(Qt::blue));
        }
    }

    void cornerPassesThroughTheMiddleOfTheQuarterCircle()
    {
        // On the diagonal the outline of a radius of 40 is 40 × (1 − √½) = 11.7 from either edge.
        const QImage image = roundedPicture(filled(40), {}, {400, 400}, 1).image;
        QCOMPARE(image.pixelColor(10, 10).alpha(), 0);
        QCOMPARE(image.pixelColor(13, 13), QColor(Qt::blue));
        // Further along the edge it has begun to turn before a circle would.
        QVERIFY(image.pixelColor(45, 0).alpha() < 255);
        QCOMPARE(image.pixelColor(70, 0), QColor(Qt::blue));
    }

    void borderIsAtLeastOnePixelAndEvenOnAllSides_data() { addScales(); }

    void borderIsAtLeastOnePixelAndEvenOnAllSides()
    {
        QFETCH(const qreal, scale);
        const RoundedShape shape{.color = Qt::white, .borderColor = Qt::red, .radius = 7, .borderWidth = 0.5};
        const QImage image = roundedPicture(shape, {3.3, 4.4}, kButton, scale).image;
        const int line = qMax(1, qRound(0.5 * scale));
        const int x = image.width() / 2;
        const int y = image.height() / 2;
        for (const auto& [edge, inside] :
             {std::pair(QPoint(x, line - 1), QPoint(x, line)),
              std::pair(QPoint(x, image.height() - line), QPoint(x, image.height() - line - 1)),
              std::pair(QPoint(line - 1, y), QPoint(line, y)),
              std::pair(QPoint(image.width() - line, y), QPoint(image.width() - line - 1, y))})
        {
            QCOMPARE(image.pixelColor(edge), QColor(Qt::red));
            QCOMPARE(image.pixelColor(inside), QColor(Qt::white));
        }
    }

    void translucentInsideDoesNotShowTheBorderBelow()
    {
        const RoundedShape ring{
            .color = Qt::transparent, .borderColor = Qt::red, .radius = 7, .borderWidth = 2};
        const QImage image = roundedPicture(ring, {}, kButton, 1).image;
        QCOMPARE(image.pixelColor(48, 15).alpha(), 0);
        QCOMPARE(image.pixelColor(48, 1), QColor(Qt::red));
    }

    void hairlineIsNeverThinnerThanAPixelNorLost()
    {
        for (int step = 0; step < 20; ++step) {
            const PlacedPicture line = roundedPicture(filled(0), {16, step * 0.7}, {100, 1}, 1.25);
            QCOMPARE(line.image.height(), 1);
            QVERIFY(isWhole(line.image, 0));
        }
    }

    void nothingForAnEmptySize()
    {
        QVERIFY(roundedPicture(filled(7), {}, {0, 30}, 1).image.isNull());
        QVERIFY(roundedPicture(filled(7), {}, {-4, 30}, 1).image.isNull());
    }
};

FERROBANK_TEST(RoundedPictureTest)
#include "RoundedPictureTest.moc"
