#include "Platform/Notification.h"

#include <QtCore/QStringList>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>

namespace ferrobank {

using namespace Qt::StringLiterals;

void notifyUser(const QString& title, const QString& text)
{
    const QString service = u"org.freedesktop.Notifications"_s;
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, u"/org/freedesktop/Notifications"_s, service, u"Notify"_s);
    const QVariantMap hints{{u"desktop-entry"_s, u"org.ferrobank.Ferrobank"_s}};
    constexpr uint kNew = 0;
    constexpr int kUsualTime = -1;
    call << u"Ferrobank"_s << kNew << u"org.ferrobank.Ferrobank"_s << title << text.toHtmlEscaped()
         << QStringList() << hints << kUsualTime;
    QDBusConnection::sessionBus().send(call);
}

} // namespace ferrobank
