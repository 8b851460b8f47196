#pragma once

#include "Ferrobank/CLI/DriveStatus.h"

#include <QtCore/QLocale>
#include <QtCore/QString>

namespace ferrobank {

/// What the files on the drive take, in bytes. Plain value; a figure that the drive tool does not tell is 0.
struct Footprint {
    quint64 filesOnDrive = 0; ///< the files' own sizes
    quint64 onDisk = 0;       ///< what the store takes on this computer
    quint64 saved = 0;        ///< the tool's own figure, never derived from the other two

    static Footprint of(const DriveStatus& status);

    /// There is no saving to show: nothing is saved, or what is on disk is not known.
    [[nodiscard]] bool nothingSaved() const { return saved == 0 || onDisk == 0; }

    /// The share of the files' sizes that they really take on disk, from 0 to 1.
    [[nodiscard]] double fraction() const;

    /// How many times smaller the files are on disk, with one fraction digit; not clamped. Only while there
    /// is a saving to show.
    [[nodiscard]] QString ratio(const QLocale& locale = QLocale()) const;

    /// The sentence under the savings bar, only while there is a saving to show.
    [[nodiscard]] QString sentence(const QLocale& locale = QLocale()) const;

    friend bool operator==(const Footprint&, const Footprint&) = default;
};

} // namespace ferrobank
