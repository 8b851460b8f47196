#include "Platform/linux/workspace/DesktopServices.h"

#include "Platform/Latch.h"
#include "Platform/linux/Descriptor.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QScopedPointer>
#include <QtCore/QUrl>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusUnixFileDescriptor>

#include <fcntl.h>

#include <memory>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

/// The bus may have to start the file manager first.
constexpr int kLimitInMilliseconds = 10'000;

QCoro::Task<bool> succeeds(QDBusMessage call)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        co_return false;
    }
    // Deleted later, because this coroutine goes on inside the watcher's own signal.
    const std::unique_ptr<QDBusPendingCallWatcher, QScopedPointerDeleteLater> watcher(
        new QDBusPendingCallWatcher(bus.asyncCall(call, kLimitInMilliseconds)));
    Latch answered;
    QObject::connect(watcher.get(), &QDBusPendingCallWatcher::finished, watcher.get(),
                     [answered]() mutable { answered.open(); });
    if (!watcher->isFinished()) {
        co_await answered.wait();
    }
    co_return !watcher->isError();
}

QCoro::Task<bool> askFileManager(QString method, QString path, QString activationToken)
{
    auto call =
        QDBusMessage::createMethodCall(u"org.freedesktop.FileManager1"_s, u"/org/freedesktop/FileManager1"_s,
                                       u"org.freedesktop.FileManager1"_s, method);
    const QStringList uris{QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)};
    call << uris << activationToken;
    co_return co_await succeeds(call);
}

QDBusMessage portalCall(const QString& method, const QVariant& what, const QString& activationToken)
{
    auto call = QDBusMessage::createMethodCall(u"org.freedesktop.portal.Desktop"_s,
                                               u"/org/freedesktop/portal/desktop"_s,
                                               u"org.freedesktop.portal.OpenURI"_s, method);
    QVariantMap options;
    if (!activationToken.isEmpty()) {
        options.insert(u"activation_token"_s, activationToken);
    }
    call << QString() << what << options;
    return call;
}

} // namespace

QCoro::Task<bool> showFolder(QString folder, QString activationToken)
{
    return askFileManager(u"ShowFolders"_s, folder, activationToken);
}

QCoro::Task<bool> revealFile(QString file, QString activationToken)
{
    return askFileManager(u"ShowItems"_s, file, activationToken);
}

QCoro::Task<bool> openThroughPortal(QString url, QString activationToken)
{
    return succeeds(portalCall(u"OpenURI"_s, url, activationToken));
}

QCoro::Task<bool> openFileThroughPortal(QString path, QString activationToken)
{
    const Descriptor descriptor(::open(QFile::encodeName(path).constData(), O_PATH | O_CLOEXEC));
    if (!descriptor.isOpen()) {
        co_return false;
    }
    const QString method = QFileInfo(path).isDir() ? u"OpenDirectory"_s : u"OpenFile"_s;
    const auto what = QVariant::fromValue(QDBusUnixFileDescriptor(descriptor.number()));
    const QDBusMessage call = portalCall(method, what, activationToken);
    co_return co_await succeeds(call);
}

bool isSandboxed()
{
    return QFile::exists(u"/.flatpak-info"_s) || qEnvironmentVariableIsSet("SNAP");
}

} // namespace ferrobank
