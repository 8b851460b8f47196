#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>

#include <functional>
#include <memory>

namespace ferrobank::updates {

/// One command of the worker under way. Dropping it ends the process and its events. Main thread.
class WorkerRun {
public:
    virtual ~WorkerRun() = default;

    /// Lets the process live on without this object, and beyond the end of the application.
    virtual void release() = 0;

    /// Waits in place for the next event, at most this long; for the very end of the application, when no
    /// event loop runs any more. False when none came.
    virtual bool waitForEvent(int milliseconds) = 0;
};

/// Starts the worker. Main thread; outlives its runs.
class UpdateWorker {
public:
    /// Called from the event loop for each event. The last one is "failed" or the command's result; a worker
    /// that ends without either, or cannot be started, gives a "failed" of its own.
    using Listener = std::function<void(const QJsonObject&)>;

    virtual ~UpdateWorker() = default;

    [[nodiscard]] virtual std::unique_ptr<WorkerRun> start(const QString& command, const QJsonObject& request,
                                                           Listener listener) = 0;
};

} // namespace ferrobank::updates
