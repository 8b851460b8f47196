#include "Platform/linux/updates/session/ProcessWorker.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QObject>
#include <QtCore/QProcess>

#include <utility>

namespace ferrobank::updates {
namespace {

using namespace Qt::StringLiterals;

constexpr qsizetype kLongestLine = qsizetype{4} * 1024 * 1024;

bool isLast(const QJsonObject& event)
{
    const QString name = event[u"event"_s].toString();
    return name != "progress"_L1 && name != "verifying"_L1 && name != "waiting"_L1;
}

class ProcessRun final : public WorkerRun {
public:
    ProcessRun(const QString& program, const QString& command, const QJsonObject& request,
               UpdateWorker::Listener listener);
    ~ProcessRun() override;

    void release() override;
    bool waitForEvent(int milliseconds) override;

private:
    void read();
    void ended();
    void deliver(const QJsonObject& event);

    // Owned, but never destroyed while it runs on its own: a QProcess kills its child with itself.
    std::unique_ptr<QProcess> _process = std::make_unique<QProcess>();
    UpdateWorker::Listener _listener;
    QByteArray _pending;
    bool _isOver = false;
    std::shared_ptr<bool> _isGone = std::make_shared<bool>(false);
};

ProcessRun::ProcessRun(const QString& program, const QString& command, const QJsonObject& request,
                       UpdateWorker::Listener listener)
    : _listener(std::move(listener))
{
    QProcess* const process = _process.get();
    QObject::connect(process, &QProcess::readyReadStandardOutput, process, [this] { read(); });
    // Queued, because what hears of the end may drop this run, and its process, in the same breath.
    QObject::connect(
        process, &QProcess::finished, process,
        [this, isGone = _isGone] {
            if (!*isGone)
                ended();
        },
        Qt::QueuedConnection);
    QObject::connect(
        process, &QProcess::errorOccurred, process,
        [this, isGone = _isGone](QProcess::ProcessError error) {
            if (!*isGone && error == QProcess::FailedToStart)
                ended();
        },
        Qt::QueuedConnection);
    // Its errors go where ours go, and so do those of the version that it starts when we have ended.
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->start(program, QStringList{command});
    process->write(QJsonDocument(request).toJson(QJsonDocument::Compact));
    process->closeWriteChannel();
}

ProcessRun::~ProcessRun()
{
    *_isGone = true;
    if (!_process)
        return;
    QProcess* const process = _process.release();
    process->disconnect();
    if (process->state() == QProcess::NotRunning) {
        process->deleteLater();
        return;
    }
    // It ends at once on the signal; waiting for that here could hold up the window.
    QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
    process->terminate();
}

void ProcessRun::release()
{
    *_isGone = true;
    QProcess* const process = _process.release();
    process->disconnect();
    QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
}

bool ProcessRun::waitForEvent(int milliseconds)
{
    return _process->waitForReadyRead(milliseconds);
}

void ProcessRun::deliver(const QJsonObject& event)
{
    if (_isOver)
        return;
    _isOver = isLast(event);
    // The listener may replace itself with the next command.
    const UpdateWorker::Listener listener = _listener;
    listener(event);
}

void ProcessRun::read()
{
    _pending += _process->readAllStandardOutput();
    const std::shared_ptr<bool> isGone = _isGone;
    for (qsizetype end = _pending.indexOf('\n'); end >= 0; end = _pending.indexOf('\n')) {
        const QJsonObject event = QJsonDocument::fromJson(_pending.first(end)).object();
        _pending.remove(0, end + 1);
        deliver(event);
        if (*isGone)
            return;
    }
    if (_pending.size() > kLongestLine)
        _pending.clear();
}

void ProcessRun::ended()
{
    const std::shared_ptr<bool> isGone = _isGone;
    read();
    if (*isGone)
        return;
    deliver(QJsonObject{{u"event"_s, u"failed"_s},
                        {u"problem"_s, u"install"_s},
                        {u"sentence"_s, u"The part of the application that updates it could not be run."_s}});
}

} // namespace

ProcessWorker::ProcessWorker(QString program) : _program(std::move(program)) {}

std::unique_ptr<WorkerRun> ProcessWorker::start(const QString& command, const QJsonObject& request,
                                                Listener listener)
{
    return std::make_unique<ProcessRun>(_program, command, request, std::move(listener));
}

} // namespace ferrobank::updates
