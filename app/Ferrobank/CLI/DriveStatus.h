#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <optional>

namespace ferrobank {

/// The drive at one moment, as the drive tool's "status --json" reports it. Plain value; the fields are the
/// document's keys. Sizes are bytes; an absent size is unknown, not zero.
struct DriveStatus {
    bool installed = false;
    bool mounted = false;
    QString mountpoint;
    std::optional<quint64> volume_used; ///< the files on the drive as the volume presents them
    std::optional<quint64> store_bytes; ///< what the store takes on this computer's disk
    std::optional<quint64> saved;       ///< the tool's own figure
    std::optional<QString> attach_error;
    std::optional<bool> update_pending;
    QString log;

    /// Decodes one JSON object. Invalid UTF-8 is replaced, unknown keys are ignored, null is absent for the
    /// optional keys. Throws DecodingError: there is no partial record.
    static DriveStatus decode(const QByteArray& json);

    friend bool operator==(const DriveStatus&, const DriveStatus&) = default;
};

} // namespace ferrobank
