#include "support/PrivateBus.h"

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

constexpr auto kVariable = "DBUS_SESSION_BUS_ADDRESS";
constexpr int kStartLimit = 10'000;

} // namespace

PrivateBus::PrivateBus() : _environmentBefore(qgetenv(kVariable))
{
    const QString address = u"unix:path="_s + _folder.filePath(u"bus"_s);
    _daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    _daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--nopidfile"_s, u"--print-address"_s,
                                     u"--address="_s + address});
    // The daemon prints its address once it listens.
    if (_daemon.waitForReadyRead(kStartLimit)) {
        _address = QString::fromUtf8(_daemon.readAllStandardOutput()).trimmed();
        qputenv(kVariable, _address.toUtf8());
    }
}

PrivateBus::~PrivateBus()
{
    for (const QString& name : _connections) {
        QDBusConnection::disconnectFromBus(name);
    }
    if (_environmentBefore.isNull()) {
        qunsetenv(kVariable);
    } else {
        qputenv(kVariable, _environmentBefore);
    }
    _daemon.terminate();
    _daemon.waitForFinished();
}

QDBusConnection PrivateBus::connect()
{
    static int count = 0;
    _connections << u"client-%1"_s.arg(++count);
    return QDBusConnection::connectToBus(_address, _connections.constLast());
}

QDBusMessage PrivateBus::call(const QDBusConnection& from, const QString& service, const QString& path,
                              const QString& interface, const QString& method, const QVariantList& arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return from.call(message, QDBus::BlockWithGui);
}

} // namespace ferrobank
