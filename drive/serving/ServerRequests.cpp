#include "figures/DisplayText.h"
#include "platform/Failure.h"
#include "platform/ToolPrograms.h"
#include "serving/Server.h"
#include "sharing/ReadingPass.h"
#include "store/Superblock.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <ctime>
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
    case Operation::ShareNow:
        if (_workers && !_exportLimit) {
            _workers->shareNow();
            request.answer(Reply::success());
        } else {
            request.answer({.ok = false,
                            .code = "not-now",
                            .text = _exportLimit
                                        ? "The files are being copied away; repeated data is shared when "
                                          "that is done."
                                        : "The drive is not mounted."});
        }
        return;
    case Operation::HoldSharing:
    case Operation::Resume:
        _state.sharing.paused = request.request.operation == Operation::HoldSharing;
        if (_workers) {
            _workers->holdSharing(_state.sharing.paused ? Housekeeping::Held::Yes : Housekeeping::Held::No);
        }
        request.answer(Reply::success());
        return;
    case Operation::FilesRead:
    case Operation::Replaced:
        noteFilesRead(request.request);
        request.answer(Reply::success());
        return;
    case Operation::Accept:
        acceptStore(std::move(request));
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
            recordGeneration();
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

void Server::noteFilesRead(const Request& request)
{
    lookAtDevice();
    IntegrityState& integrity = _state.integrity;
    integrity.settledErrors = integrity.deviceErrors;
    std::vector<std::string> names;
    for (const std::string& file : readUnreadableList(_paths.unreadable)) {
        names.push_back(displayName(file));
    }
    integrity.setUnreadable(request.total, std::move(names));
    if (request.operation == Operation::Replaced) {
        return;
    }
    integrity.lastReading = ::time(nullptr);
    integrity.readingDue = ReadingReason::None;
    if (_workers) {
        _workers->allRead(request.total);
    }
}

void Server::acceptStore(PendingRequest request)
{
    _state.integrity.olderImage = false;
    const std::optional<Superblock> superblock = readSuperblock(_paths.image);
    if (_volume || !superblock || superblock->uuid == _knownFigures.uuid) {
        request.answer(Reply::success());
        return;
    }
    Figures fresh;
    fresh.uuid = superblock->uuid;
    fresh.generation = superblock->generation;
    fresh.since = ::time(nullptr);
    try {
        fresh.write(_paths.figures);
    } catch (const Failure& failure) {
        request.answer({.ok = false, .code = failure.code(), .text = failure.text()});
        return;
    }
    _log.write("Another volume is used from now on: " + superblock->uuid + ".");
    _state.integrity = {};
    remember(fresh);
    tryAttach(Interaction::MayAsk);
    request.answer(attachReply());
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
