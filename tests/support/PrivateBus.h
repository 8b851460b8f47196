#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QProcess>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>

namespace ferrobank {

/// A session bus of a test's own. While it lives the environment names it as the session bus; clients that a
/// test makes talk to the code under test through it. Both may live in one thread: call() keeps the event
/// loop turning.
class PrivateBus {
public:
    /// Check isUp() afterwards.
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    [[nodiscard]] bool isUp() const { return _daemon.state() == QProcess::Running; }

    /// A further connection, as another program has one.
    [[nodiscard]] QDBusConnection connect();

    /// The reply or the error.
    static QDBusMessage call(const QDBusConnection& from, const QString& service, const QString& path,
                             const QString& interface, const QString& method,
                             const QVariantList& arguments = {});

private:
    QTemporaryDir _folder;
    QProcess _daemon;
    QByteArray _environmentBefore;
    QString _address;
    QStringList _connections;
};

} // namespace ferrobank
