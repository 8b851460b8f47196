#pragma once

#include <QtCore/QByteArray>
#include <QtGui/QIcon>

#include <filesystem>
#include <string>
#include <vector>

namespace ferrobank {

/// One picture as hosts take it: 32 bits a pixel, alpha first, in network byte order.
struct TrayPixmap {
    int width = 0;
    int height = 0;
    QByteArray argb;
};

/// The looks of the tray icon: names for hosts that know icon themes and colour symbolic icons for their
/// panel, pictures for all others. Plain value; the pictures are read when they are first asked for, and then
/// kept.
class TrayIcon {
public:
    enum class Shape { Normal, NeedsAttention };

    /// `resources` is the bundle's folder of that name.
    explicit TrayIcon(std::filesystem::path resources);

    [[nodiscard]] static const char* name(Shape shape);

    /// Where a host finds the names, besides the icon themes it has.
    [[nodiscard]] std::string themePath() const;

    /// Empty when the files are missing or broken: the host then draws a substitute of its own.
    [[nodiscard]] const std::vector<TrayPixmap>& pixmaps(Shape shape) const;

    /// The same pictures for the toolkit.
    [[nodiscard]] QIcon icon(Shape shape) const;

private:
    [[nodiscard]] QString file(Shape shape, int edge) const;

    struct Pictures {
        bool read = false;
        std::vector<TrayPixmap> pixmaps;
    };

    std::filesystem::path _resources;
    mutable Pictures _normal;
    mutable Pictures _needsAttention;
};

} // namespace ferrobank
