#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QUrl>

#include <cstdint>

namespace ferrobank::updates {

/// An update that was found: what the user is shown of it and what is needed to fetch it. Plain value;
/// travels as JSON between worker and application and lies beside a staged version.
struct Offer {
    QString version;
    QString displayVersion;
    QString channel;
    QString notes;                   ///< text without formatting
    QUrl link;                       ///< page to open; may be empty
    QUrl archive;                    ///< empty when there is nothing to download
    std::int64_t length = 0;         ///< bytes
    std::int64_t unpackedLength = 0; ///< bytes, 0 for unknown
    QString signature;               ///< base64
    bool critical = false;
    bool major = false;
    bool informational = false;
    bool phased = false;
    bool takenBack = false; ///< was installed before, did not start, and the version before it was put back

    friend bool operator==(const Offer&, const Offer&) = default;
};

[[nodiscard]] QJsonObject offerToJson(const Offer& offer);
[[nodiscard]] Offer offerFromJson(const QJsonObject& json); ///< what is missing keeps its default

} // namespace ferrobank::updates
