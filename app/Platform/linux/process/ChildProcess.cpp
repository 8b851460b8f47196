#include "Platform/ChildProcess.h"

#include "Platform/linux/process/ChildRun.h"

#include <QtCore/QPointer>

namespace ferrobank {

namespace {

QCoro::Task<int> exitStatus(std::shared_ptr<ChildOutcome> outcome)
{
    co_await outcome->exited.wait();
    co_return outcome->status;
}

QCoro::Task<> endOfOutput(std::shared_ptr<ChildOutcome> outcome)
{
    co_await outcome->outputEnded.wait();
}

class LinuxChildProcess final : public ChildProcess {
public:
    explicit LinuxChildProcess(ChildRun* run) : _run(run), _outcome(run->outcome()) {}

    LinuxChildProcess(const LinuxChildProcess&) = delete;
    LinuxChildProcess& operator=(const LinuxChildProcess&) = delete;

    ~LinuxChildProcess() override
    {
        if (_run) {
            _run->abandon();
        }
    }

    QCoro::Task<int> finished() override { return exitStatus(_outcome); }

    QCoro::Task<> outputEnded() override { return endOfOutput(_outcome); }

private:
    QPointer<ChildRun> _run;
    std::shared_ptr<ChildOutcome> _outcome;
};

} // namespace

void ChildProcess::keepEnvironment()
{
    ferrobank::keepEnvironment();
}

std::unique_ptr<ChildProcess> ChildProcess::launch(Setup setup)
{
    LaunchRequest request;
    request.program = std::move(setup.program);
    request.arguments = std::move(setup.arguments);
    request.environment = std::move(setup.environment);
    request.captureOutput = static_cast<bool>(setup.output);
    request.captureErrorText = static_cast<bool>(setup.errorText);
    auto* const run = new ChildRun(launchChild(request), std::move(setup.output), std::move(setup.errorText),
                                   setup.patience);
    return std::make_unique<LinuxChildProcess>(run);
}

std::unique_ptr<ChildProcess> ChildProcess::launch(const QString& program, const QStringList& arguments,
                                                   StandardError standardError, Sink output, Sink errorText)
{
    Setup setup;
    setup.program = program;
    setup.arguments = arguments;
    setup.output = std::move(output);
    if (standardError == StandardError::Capture) {
        setup.errorText = std::move(errorText);
    }
    return launch(std::move(setup));
}

} // namespace ferrobank
