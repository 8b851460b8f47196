#include "Platform/linux/workspace/DesktopPrograms.h"

#include "Platform/ChildProcess.h"
#include "Platform/Latch.h"
#include "Platform/linux/process/ForeignEnvironment.h"

#include <QtCore/QScopedPointer>
#include <QtCore/QStandardPaths>
#include <QtCore/QTimer>

#include <memory>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

struct Attempt {
    Latch decided;
    bool failed = false;
};

/// Holds the child until it ends, so that its ending is known.
QCoro::Task<> watch(std::unique_ptr<ChildProcess> child, std::shared_ptr<Attempt> attempt)
{
    const int status = co_await child->finished();
    attempt->failed = status != 0;
    attempt->decided.open();
}

QCoro::Task<bool> works(Command command, QString activationToken, std::chrono::milliseconds failsAtOnce)
{
    ChildProcess::Setup setup;
    setup.program = programNamed(command.value(0));
    setup.arguments = command.mid(1);
    setup.environment = foreignEnvironment(activationToken);
    if (setup.program.isEmpty()) {
        co_return false;
    }
    const auto attempt = std::make_shared<Attempt>();
    try {
        const auto watching = watch(ChildProcess::launch(std::move(setup)), attempt);
    } catch (const LaunchError&) {
        co_return false;
    }
    // Deleted later, because this coroutine goes on inside the timer's own signal.
    const std::unique_ptr<QTimer, QScopedPointerDeleteLater> timer(new QTimer);
    timer->setSingleShot(true);
    timer->callOnTimeout([decided = attempt->decided]() mutable { decided.open(); });
    timer->start(failsAtOnce);
    co_await attempt->decided.wait();
    timer->stop();
    co_return !attempt->failed;
}

} // namespace

QString programNamed(const QString& name)
{
    const QStringList environment = foreignEnvironment();
    const auto path = std::find_if(environment.begin(), environment.end(),
                                   [](const QString& variable) { return variable.startsWith(u"PATH="); });
    const QString folders = path == environment.end() ? u"/usr/local/bin:/usr/bin:/bin"_s : path->mid(5);
    return QStandardPaths::findExecutable(name, folders.split(u':', Qt::SkipEmptyParts));
}

QCoro::Task<bool> startFirstThatWorks(QList<Command> commands, QString activationToken,
                                      std::chrono::milliseconds failsAtOnce)
{
    for (const Command& command : commands) {
        const bool worked = co_await works(command, activationToken, failsAtOnce);
        if (worked) {
            co_return true;
        }
    }
    co_return false;
}

} // namespace ferrobank
