#pragma once

#include "Platform/SystemReport.h"

#include <QtCore/QStringList>

namespace ferrobank {

/// A system that tells what the test has put down.
class FakeSystemReport : public SystemReport {
public:
    SystemFacts facts{.desktop = QStringLiteral("XFCE"),
                      .session = QStringLiteral("x11"),
                      .installKind = QStringLiteral("folder"),
                      .serviceManager = QStringLiteral("systemd 252"),
                      .trayHost = QStringLiteral("xfce4-panel"),
                      .portals = {QStringLiteral("org.freedesktop.portal.Desktop")},
                      .mountLine = QStringLiteral("/dev/loop0 /home/anna/Ferrobank btrfs rw"),
                      .user = QStringLiteral("anna"),
                      .host = QStringLiteral("violet")};
    QStringList askedFor;

    QCoro::Task<SystemFacts> read(QString mountpoint) override
    {
        askedFor << mountpoint;
        const SystemFacts answer = facts;
        co_return answer;
    }
};

} // namespace ferrobank
