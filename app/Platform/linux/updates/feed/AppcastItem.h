#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QUrl>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ferrobank::updates {

/// How the text of release notes is written.
enum class NotesFormat { Html, PlainText, Markdown };

/// Release notes that lie beside the feed, with a signature of their own.
struct NotesLink {
    QString language; ///< "en" where the feed names none
    QUrl url;
    std::int64_t length = 0; ///< bytes
    std::string signature;   ///< base64, empty for none
};

/// One release as the feed tells it. Plain value; version texts are kept as they are written.
struct AppcastItem {
    QString title;
    QUrl link;                     ///< product page; https, else empty
    std::optional<QDateTime> date; ///< none: no phasing

    std::string version;
    QString displayVersion;
    QString channel; ///< empty: for everybody
    QString
        system; ///< "linux-x86_64", …; empty means the first system that feeds of this format were made for

    // Limits; empty for none.
    std::string minimumSystem;
    std::string maximumSystem;
    std::string minimumQt;
    std::string minimumInstalled;         ///< below it the item is not for this copy
    std::string minimumForAutomatic;      ///< below it the item is a major upgrade
    std::string ignoreSkippedMajorsBelow; ///< forgets the skip of a major upgrade whose release is below it
    QStringList hardware;                 ///< required processors, all of them

    bool informationForAll = false;          ///< only a link to follow
    std::vector<std::string> informationFor; ///< … for exactly these installed versions
    std::string informationBelow;            ///< … for installed versions below this
    bool critical = false;                   ///< for everybody, unless criticalBelow says for whom
    std::string criticalBelow;               ///< for installed versions below this
    std::chrono::seconds phasedRolloutInterval{0};

    QUrl archive;                    ///< https; empty when there is nothing to download
    std::int64_t length = 0;         ///< bytes of the archive
    std::int64_t unpackedLength = 0; ///< bytes needed to unpack it; 0 when the feed does not say
    std::string signature;           ///< base64, empty for none
    bool delta = false;              ///< a difference to one version; never offered here
    bool package = false;            ///< an installer of another kind; never offered here

    QString notes; ///< text inside the feed
    NotesFormat notesFormat = NotesFormat::Html;
    std::vector<NotesLink> notesLinks;
    QUrl versionHistory;
};

/// A feed that could be read.
struct Appcast {
    QList<AppcastItem> items;
    std::optional<QDateTime> validUntil; ///< after it the feed counts as old, however genuine
};

} // namespace ferrobank::updates
