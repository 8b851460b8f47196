#pragma once

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtGui/QColor>

#include <memory>
#include <optional>

namespace ferrobank {

/// What the desktop says about how programs should look. Main thread; follows the desktop while it lives.
/// What the desktop does not tell is absent, and the caller has its own fallback.
class DesktopAppearance : public QObject {
    Q_OBJECT

public:
    struct Wishes {
        std::optional<bool> dark;
        std::optional<QColor> accent;
        bool reducedMotion = false;
        bool highContrast = false;
        std::optional<QString> fontFamily;
        std::optional<double> fontSize; ///< in points, with the desktop's factor for text in it

        friend bool operator==(const Wishes&, const Wishes&) = default;
    };

    /// Starts asking at once and does not wait.
    static std::unique_ptr<DesktopAppearance> make();

    /// Waits a moment for the first answer, if it is still on its way, so that a window does not open in the
    /// wrong colours. The moment is longer, but once only, where who answers has to be started first.
    virtual void settle() = 0;

    [[nodiscard]] const Wishes& wishes() const { return _wishes; }

Q_SIGNALS:
    void changed();

protected:
    void setWishes(const Wishes& wishes);

private:
    Wishes _wishes;
};

/// Whether windows may be partly transparent, so that rounded corners show what lies behind them.
[[nodiscard]] bool windowsAreComposited();

/// Whether the desktop may leave an open window behind others although the user has asked for it: it wants a
/// token of the user's click, which a program started from a terminal does not have. A window that appears
/// anew is in front.
[[nodiscard]] bool raisingNeedsLeave();

} // namespace ferrobank
