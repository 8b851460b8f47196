#pragma once

#include "support/updates/SigningKey.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace ferrobank {

/// One entry of an archive, as bad as a test wants it.
struct TestEntry {
    std::string path; ///< whole, with the top folder
    QByteArray content;
    unsigned type = 0100000; ///< the kind bits of a file's mode: regular, 040000 folder, 0120000 link, …
    unsigned mode = 0644;
    std::string target;   ///< of a link
    std::string hardLink; ///< makes the entry a hard link to this path
};

/// A small version of the application: what its folder holds, and its archive. Change it before asking for
/// the archive to get one that is wrong in just that way.
class TestRelease {
public:
    /// A folder that updates itself: executable, worker, property list, marker, a library and a link. `feed`,
    /// the key and a spare one go into the property list. The executable writes its version into $RELEASE_LOG
    /// and ends; the worker is a stand-in that answers "probe".
    TestRelease(QString version, const QString& feed, const SigningKey& key);

    [[nodiscard]] const QString& version() const { return _version; }

    /// The property list with other keys, or another feed.
    void setConfiguration(const QString& feed, const QStringList& keys);

    void setFile(const std::string& path, const QByteArray& content, bool isExecutable = false);
    void removeFile(const std::string& path);

    /// Changes the manifest after it was computed.
    void editManifest(std::function<void(nlohmann::json&)> edit);

    /// Added behind everything else.
    void add(TestEntry entry);

    /// Writes the folder as an installed copy.
    void installAt(const QString& root) const;

    /// tar.zst, manifest first.
    [[nodiscard]] QByteArray archive() const;

private:
    struct File {
        std::string path;
        QByteArray content;
        bool isExecutable = false;
    };

    [[nodiscard]] QByteArray manifest() const;

    QString _version;
    std::vector<File> _files;
    std::vector<TestEntry> _added;
    std::function<void(nlohmann::json&)> _edit;
};

/// Packs entries as they are.
[[nodiscard]] QByteArray packArchive(const std::vector<TestEntry>& entries, bool isCompressed = true);

/// One item of a feed.
struct TestItem {
    QString version;
    QString url;
    qint64 length = 0;
    QString signature;
    QString date = QStringLiteral("Fri, 20 Nov 2026 10:00:00 +0000");
    QString more; ///< further elements of the item
};

/// An end that no test sees, and none at all.
inline const QString kLongEnough = QStringLiteral("Fri, 20 Nov 2099 10:00:00 +0000");
inline const QString kWithoutEnd;

/// A feed's content, unsigned.
[[nodiscard]] QByteArray feedOf(const QList<TestItem>& items, const QString& validUntil = kLongEnough);

} // namespace ferrobank
