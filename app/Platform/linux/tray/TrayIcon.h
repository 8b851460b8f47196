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

    /// What hosts are given first. Named: a name, which hosts that know symbolic icons draw in their panel's
    /// own colour. Drawn: pictures with an outline, for hosts that would paint the drawing as it is in the
    /// file.
    enum class Look { Named, Drawn };

    /// `resources` is the bundle's folder of that name.
    explicit TrayIcon(std::filesystem::path resources, Look look = Look::Named);

    /// What suits the panels of the desktop of this name, as XDG_CURRENT_DESKTOP has it. Pure.
    [[nodiscard]] static Look lookFor(const QString& currentDesktop);

    [[nodiscard]] Look look() const { return _look; }

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
    Look _look;
    mutable Pictures _normal;
    mutable Pictures _needsAttention;
};

} // namespace ferrobank
