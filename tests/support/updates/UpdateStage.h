#pragma once

#include "support/updates/HttpsServer.h"
#include "support/updates/TestRelease.h"
#include "support/updates/WorkerRunner.h"

#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>

namespace ferrobank {

/// Everything around one update: a web server with a feed and an archive, a copy of version 1.0.0 installed
/// in a folder of its own, and the real worker.
class UpdateStage {
public:
    UpdateStage();

    [[nodiscard]] QString parent() const { return _folder.filePath(QStringLiteral("home of ä")); }

    [[nodiscard]] QString root() const { return _root; }

    [[nodiscard]] QString staging() const;

    [[nodiscard]] QString releaseLog() const { return _folder.filePath(QStringLiteral("releases.log")); }

    /// Publishes a release: archive and signed feed.
    void publish(const TestRelease& release, const QString& more = {});
    /// Publishes an archive under this version, whatever is in it, signed by the key.
    void publishArchive(const QString& version, const QByteArray& archive, const QString& more = {});
    void publishFeed(const QByteArray& content);

    [[nodiscard]] TestRelease makeRelease(const QString& version) const;

    /// Moves the installed copy into versions/1.0.0 behind a link.
    void useVersionedLayout();

    [[nodiscard]] QJsonObject request() const;
    [[nodiscard]] WorkerOutcome run(const QString& command, const QJsonObject& more = {}) const;
    [[nodiscard]] WorkerOutcome check(bool byUser = true) const;
    [[nodiscard]] WorkerOutcome fetch(const QJsonObject& offer) const;

    /// check, fetch and install; the outcome of the first that fails, else of the installation.
    [[nodiscard]] WorkerOutcome update() const;

    /// The version of the copy at the stable path, by its property list; empty when it is not complete.
    [[nodiscard]] QString installedVersion() const;

    /// Names in the staging folder besides those that may stay for ever ("lock", "trial-lock", "bad").
    [[nodiscard]] QStringList leftovers() const;

    HttpsServer server;
    SigningKey key;
    QHash<QString, QString> environment;

private:
    QTemporaryDir _folder;
    QString _root;
};

} // namespace ferrobank
