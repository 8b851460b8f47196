#include "Platform/linux/desktop/DesktopFolderChooser.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QUrl>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>
#include <QtGui/QGuiApplication>
#include <QtGui/QWindow>
#include <QtWidgets/QFileDialog>

#include <sys/xattr.h>

#include <array>
#include <chrono>
#include <utility>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

const QString kPortal = u"org.freedesktop.portal.Desktop"_s;
const QString kPortalPath = u"/org/freedesktop/portal/desktop"_s;
const QString kRequestInterface = u"org.freedesktop.portal.Request"_s;

/// For the portal to say that it has taken the request; the dialog itself may stay open for ever.
constexpr std::chrono::seconds kPortalAnswers(3);

QString parentHandle(const QWindow* parent)
{
    const bool x11 = QGuiApplication::platformName() == u"xcb"_s;
    return parent != nullptr && x11 ? u"x11:"_s + QString::number(parent->winId(), 16) : QString();
}

/// A portal shows folders outside a sandbox under a path of its own, which is of no use in words for the user
/// or for other programs.
QString pathOnHost(const QString& path)
{
    std::array<char, 4096> host{};
    const ssize_t size = getxattr(QFile::encodeName(path).constData(), "user.document-portal.host-path",
                                  host.data(), host.size() - 1);
    return size > 0 ? QFile::decodeName(host.data()) : path;
}

} // namespace

std::unique_ptr<FolderChooser> FolderChooser::make()
{
    return std::make_unique<DesktopFolderChooser>();
}

DesktopFolderChooser::DesktopFolderChooser()
{
    _portalAnswers.setSingleShot(true);
    _portalAnswers.setInterval(kPortalAnswers);
    connect(&_portalAnswers, &QTimer::timeout, this, [this] {
        leavePortal();
        showOwnDialog();
    });
    _portalEnd.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    connect(&_portalEnd, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        // Its dialog has gone with it.
        if (!_portalRequest.isEmpty()) {
            leavePortal();
            end({});
        }
    });
}

void DesktopFolderChooser::choose(const Request& request, std::function<void(QString)> chosen)
{
    if (_chosen) {
        if (_dialog) {
            _dialog->raise();
            _dialog->activateWindow();
        }
        return;
    }
    _request = request;
    _chosen = std::move(chosen);
    askPortal();
}

void DesktopFolderChooser::askPortal()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        showOwnDialog();
        return;
    }
    if (_portalEnd.watchedServices().isEmpty()) {
        _portalEnd.setConnection(bus);
        _portalEnd.addWatchedService(kPortal);
    }
    const QString token = u"ferrobank%1"_s.arg(++_count);
    QString sender = bus.baseService().mid(1);
    sender.replace(u'.', u'_');
    _portalRequest = kPortalPath + u"/request/"_s + sender + u'/' + token;
    // Before the call, so that an answer cannot be missed.
    bus.connect(kPortal, _portalRequest, kRequestInterface, u"Response"_s, this,
                SLOT(portalResponded(uint, QVariantMap)));

    QString confirm = _request.confirm;
    confirm.replace(u'_', u"__"_s);
    const QVariantMap options{
        {u"handle_token"_s, token},
        {u"directory"_s, true},
        {u"modal"_s, true},
        {u"accept_label"_s, confirm},
        {u"current_folder"_s, QFile::encodeName(_request.folder) + '\0'},
    };
    QDBusMessage call = QDBusMessage::createMethodCall(
        kPortal, kPortalPath, u"org.freedesktop.portal.FileChooser"_s, u"OpenFile"_s);
    call << parentHandle(_request.parent) << _request.title << options;
    _portalAnswers.start();
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    const QString asked = _portalRequest;
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, asked] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusObjectPath> reply = *watcher;
        if (asked != _portalRequest) {
            return;
        }
        _portalAnswers.stop();
        if (reply.isError()) {
            leavePortal();
            showOwnDialog();
        }
    });
}

void DesktopFolderChooser::portalResponded(uint response, const QVariantMap& results)
{
    leavePortal();
    const QStringList uris = results.value(u"uris"_s).toStringList();
    const QString folder = response == 0 ? QUrl(uris.value(0)).toLocalFile() : QString();
    end(folder.isEmpty() ? folder : pathOnHost(folder));
}

void DesktopFolderChooser::leavePortal()
{
    _portalAnswers.stop();
    const QString request = std::exchange(_portalRequest, QString());
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.disconnect(kPortal, request, kRequestInterface, u"Response"_s, this,
                   SLOT(portalResponded(uint, QVariantMap)));
    bus.send(QDBusMessage::createMethodCall(kPortal, request, kRequestInterface, u"Close"_s));
}

void DesktopFolderChooser::showOwnDialog()
{
    auto* dialog = new QFileDialog(nullptr, _request.title, _request.folder);
    _dialog = dialog;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setLabelText(QFileDialog::Accept, _request.confirm);
    dialog->setWindowModality(Qt::ApplicationModal);
    connect(dialog, &QFileDialog::finished, this, [this, dialog](int result) {
        const bool accepted = result == QFileDialog::Accepted && !dialog->selectedFiles().isEmpty();
        end(accepted ? dialog->selectedFiles().constFirst() : QString());
    });
    if (_request.parent != nullptr) {
        dialog->winId(); // makes the native window that the parent is set on
        dialog->windowHandle()->setTransientParent(_request.parent);
    }
    dialog->show();
}

void DesktopFolderChooser::end(const QString& folder)
{
    const auto chosen = std::exchange(_chosen, nullptr);
    if (chosen && !folder.isEmpty() && QFileInfo(folder).isAbsolute()) {
        chosen(folder);
    }
}

} // namespace ferrobank
