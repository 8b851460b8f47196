#include "support/updates/WorkerRunner.h"

#include <QtCore/QEventLoop>
#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QTimer>

namespace ferrobank {

WorkerOutcome runWorker(const QString& command, const QJsonObject& request,
                        const QHash<QString, QString>& environment,
                        const std::function<void(QProcess&)>& started)
{
    constexpr int kLimit = 60'000;
    QProcess process;
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : environment.asKeyValueRange())
        variables.insert(name, value);
    process.setProcessEnvironment(variables);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QEventLoop loop;
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QObject::connect(&process, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
    process.start(QStringLiteral(UPDATE_WORKER), QStringList{command});
    process.write(QJsonDocument(request).toJson());
    process.closeWriteChannel();
    QTimer::singleShot(kLimit, &loop, &QEventLoop::quit);
    if (started)
        started(process);
    while (process.state() != QProcess::NotRunning)
        loop.exec();

    WorkerOutcome outcome;
    outcome.crashed = process.exitStatus() != QProcess::NormalExit;
    outcome.exitCode = process.exitCode();
    for (const QByteArray& line : process.readAllStandardOutput().split('\n')) {
        if (!line.isEmpty())
            outcome.events.append(QJsonDocument::fromJson(line).object());
    }
    return outcome;
}

QString faultInjector()
{
    return QStringLiteral(FAULT_INJECTOR);
}

} // namespace ferrobank
