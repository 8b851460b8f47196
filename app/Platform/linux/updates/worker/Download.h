#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QUrl>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>

namespace ferrobank::updates {

/// How the worker speaks to servers. Plain value.
struct NetworkRules {
    QString userAgent; ///< application and version, nothing about the user
    /// A certificate authority in PEM form that is trusted instead of the system's; empty for the system's.
    QByteArray authority;
    std::chrono::milliseconds stall{30'000};                ///< without a byte
    std::chrono::milliseconds total{std::chrono::hours(2)}; ///< over all redirects
    int mostRedirects = 5;
};

/// A small document and where it was found in the end.
struct Document {
    QByteArray bytes;
    QUrl address;
};

/// Fetches a document of at most `limit` bytes over https. Blocks in an event loop of its own. Throws
/// UpdateFailure (Network) on anything but a complete answer with status 200: no plain http at any hop, no
/// certificate error is passed over, no cookies, no cache.
[[nodiscard]] Document fetchDocument(const QUrl& url, std::int64_t limit, const NetworkRules& rules);

/// An archive to download and where to.
struct DownloadOrder {
    QUrl url;
    std::int64_t length = 0; ///< exact; one byte more or less is a failed download
    std::filesystem::path file;
    std::filesystem::path note;                 ///< remembers what the file is a part of, for resuming
    std::function<void(std::int64_t)> progress; ///< bytes so far, at most ten times a second
};

/// Downloads an archive, from where an earlier attempt stopped if the server proves with a strong entity tag
/// that it is still the same file; else from the start. A body that ends too early is fetched once more. The
/// file is made new, private, with its whole room taken before the first byte; or it is the regular file of
/// our own from before. Throws UpdateFailure (Network, Space, Place). The file stays for resuming unless it
/// cannot be used.
void downloadArchive(const DownloadOrder& order, const NetworkRules& rules);

} // namespace ferrobank::updates
