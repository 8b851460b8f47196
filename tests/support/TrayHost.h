#pragma once

#include "Platform/linux/bus/SessionBus.h"
#include "Platform/linux/tray/StatusNotifierItem.h"
#include "support/PrivateBus.h"

#include <QtCore/QVariantMap>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusVariant>

#include <memory>
#include <utility>

namespace ferrobank {

/// The tray item as the session composes it, on the bus that the environment names.
struct TrayProgram {
    std::unique_ptr<SessionBus> bus = SessionBus::open();
    StatusNotifierItem item;

    explicit TrayProgram(const TrayIcon& icon = TrayIcon("/nowhere")) : item(*bus, icon) { bus->attach(); }

    [[nodiscard]] QString name() const
    {
        const char* unique = nullptr;
        sd_bus_get_unique_name(bus->get(), &unique);
        return QString::fromLatin1(unique);
    }
};

/// A panel's view of a tray item and its menu.
struct TrayHost {
    QDBusConnection connection;
    QString service;

    [[nodiscard]] QVariant property(const QString& interface, const QString& path, const QString& name) const
    {
        const QDBusMessage reply =
            PrivateBus::call(connection, service, path, QStringLiteral("org.freedesktop.DBus.Properties"),
                             QStringLiteral("Get"), {interface, name});
        return reply.arguments().value(0).value<QDBusVariant>().variant();
    }

    [[nodiscard]] QVariant item(const QString& name) const
    {
        return property(QStringLiteral("org.kde.StatusNotifierItem"), QStringLiteral("/StatusNotifierItem"),
                        name);
    }

    [[nodiscard]] QDBusMessage menu(const QString& method, const QVariantList& arguments) const
    {
        return PrivateBus::call(connection, service, QStringLiteral("/MenuBar"),
                                QStringLiteral("com.canonical.dbusmenu"), method, arguments);
    }

    struct Node {
        int id = 0;
        QVariantMap properties;
    };

    /// Revision and children of the root.
    [[nodiscard]] std::pair<uint, QList<Node>> layout() const
    {
        const QDBusMessage reply = menu(QStringLiteral("GetLayout"), {0, -1, QStringList()});
        const auto root = reply.arguments().value(1).value<QDBusArgument>();
        QList<Node> nodes;
        int id = 0;
        QVariantMap properties;
        root.beginStructure();
        root >> id >> properties;
        root.beginArray();
        while (!root.atEnd()) {
            QDBusVariant child;
            root >> child;
            const auto argument = child.variant().value<QDBusArgument>();
            Node node;
            argument.beginStructure();
            argument >> node.id >> node.properties;
            argument.endStructure();
            nodes << node;
        }
        root.endArray();
        root.endStructure();
        return {reply.arguments().value(0).toUInt(), nodes};
    }
};

} // namespace ferrobank
