#include "Platform/linux/tray/TrayIcon.h"

#include <QtCore/QStringList>
#include <QtCore/QtEndian>
#include <QtGui/QImage>

#include <algorithm>
#include <array>
#include <utility>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

/// Edge lengths in pixels of the pictures in the bundle: usual panels at 100 and 200 %.
constexpr std::array kEdges{22, 24, 32, 44, 48, 64};

TrayPixmap pixmapFromImage(const QImage& image)
{
    TrayPixmap pixmap{image.width(), image.height(), {}};
    pixmap.argb.resize(qsizetype{4} * image.width() * image.height());
    auto* out = reinterpret_cast<uchar*>(pixmap.argb.data());
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x, out += 4) {
            qToBigEndian<quint32>(line[x], out);
        }
    }
    return pixmap;
}

} // namespace

TrayIcon::TrayIcon(std::filesystem::path resources, Look look) : _resources(std::move(resources)), _look(look)
{}

TrayIcon::Look TrayIcon::lookFor(const QString& currentDesktop)
{
    // The panels of these colour symbolic icons. MATE's, LXQt's and waybar paint what the file says.
    static const QStringList kColouring{u"GNOME"_s, u"Unity"_s, u"Budgie"_s,     u"Pantheon"_s,
                                        u"KDE"_s,   u"XFCE"_s,  u"X-Cinnamon"_s, u"Cinnamon"_s};
    const QStringList names = currentDesktop.split(u':');
    const bool colours = std::ranges::any_of(
        kColouring, [&names](const QString& name) { return names.contains(name, Qt::CaseInsensitive); });
    return colours ? Look::Named : Look::Drawn;
}

const char* TrayIcon::name(Shape shape)
{
    return shape == Shape::NeedsAttention ? "org.ferrobank.Ferrobank-attention-symbolic"
                                          : "org.ferrobank.Ferrobank-symbolic";
}

std::string TrayIcon::themePath() const
{
    return _resources / "icons";
}

const std::vector<TrayPixmap>& TrayIcon::pixmaps(Shape shape) const
{
    Pictures& pictures = shape == Shape::NeedsAttention ? _needsAttention : _normal;
    if (!pictures.read) {
        pictures.read = true;
        for (const int edge : kEdges) {
            const QImage image = QImage(file(shape, edge)).convertToFormat(QImage::Format_ARGB32);
            if (!image.isNull()) {
                pictures.pixmaps.push_back(pixmapFromImage(image));
            }
        }
    }
    return pictures.pixmaps;
}

QIcon TrayIcon::icon(Shape shape) const
{
    QIcon icon;
    for (const int edge : kEdges) {
        icon.addFile(file(shape, edge));
    }
    return icon;
}

QString TrayIcon::file(Shape shape, int edge) const
{
    const std::string name = std::string(TrayIcon::name(shape)) + "-" + std::to_string(edge) + ".png";
    return QString::fromStdString(_resources / "tray" / name);
}

} // namespace ferrobank
