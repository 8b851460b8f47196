#include "Platform/linux/updates/session/DesktopSurroundings.h"

#include "Platform/Workspace.h"

#include <QtCore/QVariantMap>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>

namespace ferrobank::updates {
namespace {

using namespace Qt::StringLiterals;

const auto kService = u"org.freedesktop.Notifications"_s;
const auto kPath = u"/org/freedesktop/Notifications"_s;

} // namespace

DesktopSurroundings::DesktopSurroundings(Workspace& workspace) : _workspace(workspace) {}

void DesktopSurroundings::listen()
{
    if (_isListening)
        return;
    _isListening = true;
    QDBusConnection::sessionBus().connect(kService, kPath, kService, u"ActionInvoked"_s, this,
                                          SLOT(actionInvoked(uint, QString)));
}

void DesktopSurroundings::notify(const QString& title, const QString& text)
{
    listen();
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kService, u"Notify"_s);
    const QStringList actions{u"default"_s, tr("Show")};
    const QVariantMap hints{{u"desktop-entry"_s, u"org.ferrobank.Ferrobank"_s}};
    call << u"Ferrobank"_s << _shown << u"org.ferrobank.Ferrobank"_s << title << text.toHtmlEscaped()
         << actions << hints << -1;
    auto* const answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<uint> reply = *answer;
        if (!reply.isError())
            _shown = reply.value();
        answer->deleteLater();
    });
}

void DesktopSurroundings::openPage(const QString& url)
{
    _workspace.openUrl(url);
}

void DesktopSurroundings::actionInvoked(uint notification, const QString& action)
{
    if (notification == _shown && action == u"default"_s && openUpdate)
        openUpdate();
}

} // namespace ferrobank::updates
