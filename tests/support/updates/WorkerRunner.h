#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QString>

#include <functional>

class QProcess;

namespace ferrobank {

/// What one run of the real worker came to.
struct WorkerOutcome {
    QList<QJsonObject> events;
    int exitCode = -1;
    bool crashed = false;

    [[nodiscard]] QJsonObject last() const { return events.isEmpty() ? QJsonObject() : events.last(); }

    [[nodiscard]] QString lastEvent() const { return last()[QStringLiteral("event")].toString(); }

    [[nodiscard]] QString problem() const { return last()[QStringLiteral("problem")].toString(); }
};

/// Runs the built worker, with the event loop turning meanwhile so that a server in this process answers.
/// `environment` is added to the usual one; `started` is called once the process runs.
[[nodiscard]] WorkerOutcome runWorker(const QString& command, const QJsonObject& request,
                                      const QHash<QString, QString>& environment = {},
                                      const std::function<void(QProcess&)>& started = {});

/// What to preload into a worker to end it, or to make it fail, at a step of its own; FaultInjector.c.
[[nodiscard]] QString faultInjector();

} // namespace ferrobank
