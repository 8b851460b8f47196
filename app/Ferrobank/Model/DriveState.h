#pragma once

#include "Ferrobank/CLI/DriveStatus.h"

#include <QtCore/QObject>
#include <QtCore/QString>

namespace ferrobank {

/// The one word for the drive's state that the menu and the dashboard show, with its symbol and colour. Plain
/// value.
///
/// | the first rule that holds | word            | symbol                        | colour    |
/// |---------------------------|-----------------|-------------------------------|-----------|
/// | mounted                   | Mounted         | checkmark.circle.fill         | Green     |
/// | there is an attach_error  | Needs attention | exclamationmark.triangle.fill | Red       |
/// | installed                 | Starting…       | clock.fill                    | Orange    |
/// | otherwise                 | Not set up      | minus.circle.fill             | Secondary |
class DriveState {
    Q_GADGET
    Q_PROPERTY(ferrobank::DriveState::Kind kind READ kind CONSTANT)
    Q_PROPERTY(QString word READ word CONSTANT)
    Q_PROPERTY(QString symbol READ symbol CONSTANT)
    Q_PROPERTY(ferrobank::DriveState::Colour colour READ colour CONSTANT)

public:
    enum Kind { Mounted, NeedsAttention, Starting, NotSetUp };
    Q_ENUM(Kind)

    /// What the colour says; the screens' theme knows the shade.
    enum Colour { Green, Red, Orange, Secondary };
    Q_ENUM(Colour)

    DriveState() = default;
    explicit DriveState(const DriveStatus& status);

    [[nodiscard]] Kind kind() const { return _kind; }

    /// In the language of the program.
    [[nodiscard]] QString word() const;

    /// A symbol's name, the same on every screen.
    [[nodiscard]] QString symbol() const;

    [[nodiscard]] Colour colour() const;

    friend bool operator==(const DriveState&, const DriveState&) = default;

private:
    Kind _kind = NotSetUp;
};

} // namespace ferrobank
