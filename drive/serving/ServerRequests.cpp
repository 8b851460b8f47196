#include "platform/Failure.h"
#include "platform/ToolPrograms.h"
#include "serving/Server.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <thread>
#include <utility>

namespace ferrobank::drive {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatienceOnRequest = 3s;
constexpr auto kBusyStep = 200ms;
constexpr auto kStopTime = 60s;
constexpr auto kExportPause = 60s;

void keepOverExec(int descriptor, bool keep)
{
    if (descriptor >= 0) {
        ::fcntl(descriptor, F_SETFD, keep ? 0 : FD_CLOEXEC);
    }
}

} // namespace

void Server::handle(PendingRequest& request)
{
    switch (request.request.operation) {
    case Operation::Ping:
        request.answer(Reply::success());
        return;
    case Operation::Attach:
        if (!_volume) {
            tryAttach(Interaction::MayAsk);
        }
        request.answer(attachReply());
        return;
    case Operation::Restart:
        restart(request);
        return;
    case Operation::Reexec:
        becomeNewProgram(std::move(request.connection));
        return;
    case Operation::PauseDedup:
        _state.exportState = {.done = request.request.done, .total = request.request.total};
        _exportLimit = Clock::now() + kExportPause;
        if (_workers) {
            _workers->setSharing(Housekeeping::Sharing::Paused);
        }
        request.answer(Reply::success());
        return;
    case Operation::Stop:
        stop(request);
        return;
    case Operation::Quit:
        request.answer(Reply::success());
        _ended = true;
        return;
    }
}

void Server::detachWithin(std::chrono::seconds limit)
{
    const Clock::time_point deadline = Clock::now() + limit;
    const Volume volume = *_volume;
    _workers.reset();
    dropGuard();
    for (;;) {
        try {
            _attachment.detach(volume);
            _volume.reset();
            return;
        } catch (const Failure& failure) {
            if (failure.code() != "busy" || Clock::now() >= deadline) {
                throw;
            }
        }
        std::this_thread::sleep_for(kBusyStep);
    }
}

void Server::restart(PendingRequest& request)
{
    if (_volume) {
        try {
            detachWithin(kPatienceOnRequest);
        } catch (const Failure& failure) {
            startWorkers();
            _log.write("Not restarted: " + failure.text());
            request.answer({.ok = false, .code = failure.code(), .text = failure.text()});
            return;
        }
    }
    becomeNewProgram(std::move(request.connection));
    if (!_volume) {
        tryAttach(Interaction::Silent);
    }
}

void Server::becomeNewProgram(FileDescriptor waiting)
{
    if (_workers) {
        _guard = _workers->takeGuard();
    }
    _workers.reset();
    _control.reset();
    const Inheritance inheritance{.serveLock = _locks.serve.descriptor(),
                                  .storeLock = _locks.store.descriptor(),
                                  .reply = waiting.get(),
                                  .guard = _guard.get()};
    const std::array<int, 4> kept{inheritance.serveLock, inheritance.storeLock, inheritance.reply,
                                  inheritance.guard};
    for (const int descriptor : kept) {
        keepOverExec(descriptor, true);
    }
    ::setenv(Inheritance::kVariable, inheritance.toText().c_str(), 1);
    _log.write("Taking up " + _program.path + ".");
    // Not by way of the small program: that one is there as long as its file is, whatever is missing behind
    // it.
    const std::filesystem::path program = driveProgramOf(_program.path);
    ::execl(program.c_str(), _program.path.c_str(), "serve", nullptr);

    const Failure failure = systemFailure("The drive's new program cannot be started", errno);
    ::unsetenv(Inheritance::kVariable);
    for (const int descriptor : kept) {
        keepOverExec(descriptor, false);
    }
    _log.write(failure.text());
    listen();
    startWorkers();
    if (waiting) {
        const PendingRequest request{.request = {}, .connection = std::move(waiting)};
        request.answer({.ok = false, .code = "exec", .text = failure.text()});
    }
}

void Server::stop(const PendingRequest& request)
{
    try {
        if (_volume) {
            detachWithin(kPatienceOnRequest);
        }
        _state.phase = Phase::Stopping;
        _state.attachError.reset();
        _stopLimit = Clock::now() + kStopTime;
        publish();
        request.answer(Reply::success());
    } catch (const Failure& failure) {
        startWorkers();
        request.answer({.ok = false, .code = failure.code(), .text = failure.text()});
    }
}

} // namespace ferrobank::drive
