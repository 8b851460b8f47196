#pragma once

#include "Platform/linux/updates/session/UpdateWorker.h"

namespace ferrobank::updates {

/// The real worker: a child process a command, its events read line by line as they come.
class ProcessWorker final : public UpdateWorker {
public:
    /// `program` is the worker's absolute path.
    explicit ProcessWorker(QString program);

    std::unique_ptr<WorkerRun> start(const QString& command, const QJsonObject& request,
                                     Listener listener) override;

private:
    QString _program;
};

} // namespace ferrobank::updates
