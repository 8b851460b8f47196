#include "commands/StoppedDrive.h"

#include "commands/RestartCommand.h"
#include "control/ControlClient.h"
#include "mounting/BackEndChoice.h"
#include "platform/Failure.h"
#include "state/ServerProbe.h"

#include <chrono>
#include <thread>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr std::chrono::seconds kEndLimit{20};
constexpr std::chrono::milliseconds kEndStep{20};
constexpr int kBusyAttempts = 25;
constexpr std::chrono::milliseconds kBusyStep{200};

/// Waits until no process serves the drive any more, and takes its place.
Locks takePlace(const Paths& paths)
{
    const auto limit = std::chrono::steady_clock::now() + kEndLimit;
    for (;;) {
        if (std::optional<Locks> locks = Locks::tryTake(paths)) {
            return std::move(*locks);
        }
        if (std::chrono::steady_clock::now() >= limit) {
            throw Failure("The drive's background process does not end.", "not-ended");
        }
        std::this_thread::sleep_for(kEndStep);
    }
}

void askToUnmount(const ServerProbe& server)
{
    const std::optional<Reply> reply = ask(server.socket(), {.operation = Operation::Stop}, kRestartLimit);
    if (!reply) {
        throw Failure("The drive's background process did not answer. The log may name the reason.",
                      "no-answer");
    }
    if (!reply->ok) {
        throw Failure(reply->text, reply->code);
    }
}

} // namespace

StoppedDrive::StoppedDrive(const Paths& paths, const Log& log) : _paths(paths), _log(log)
{
    try {
        stop();
    } catch (const Failure&) {
        bringBack();
        throw;
    }
}

void StoppedDrive::stop()
{
    const ServerProbe server = ServerProbe::probe(_paths);
    if (server.running) {
        askToUnmount(server);
        _comesBack = true;
        static_cast<void>(ask(server.socket(), {.operation = Operation::Quit}, kPingLimit));
    }
    _locks.emplace(takePlace(_paths));
    _attachment.emplace(_paths, _log, chooseBackEnd(_paths, _locks->store.descriptor()));
    if (const std::optional<Volume> volume = _attachment->current()) {
        _attachment->detach(*volume);
    }
}

StoppedDrive::~StoppedDrive()
{
    bringBack();
}

Volume StoppedDrive::mountReadOnly()
{
    return _attachment->attachReadOnly();
}

void StoppedDrive::unmount()
{
    for (int attempt = 1;; ++attempt) {
        const std::optional<Volume> volume = _attachment->current();
        if (!volume) {
            return;
        }
        try {
            _attachment->detach(*volume);
            return;
        } catch (const Failure& failure) {
            // Indexers and previews look into whatever is mounted.
            if (failure.code() != "busy" || attempt == kBusyAttempts) {
                throw;
            }
        }
        std::this_thread::sleep_for(kBusyStep);
    }
}

void StoppedDrive::bringBack() noexcept
{
    if (!std::exchange(_comesBack, false)) {
        return;
    }
    try {
        if (_attachment) {
            unmount();
        }
        _attachment.reset();
        _locks.reset();
        ensureServing(_paths, _log);
        const ServerProbe server = ServerProbe::probe(_paths);
        const std::optional<Reply> reply =
            ask(server.socket(), {.operation = Operation::Attach}, kRestartLimit);
        if (!reply || !reply->ok) {
            _log.write("The drive could not be mounted again: " + (reply ? reply->text : "no answer."));
        }
    } catch (const std::exception& failure) {
        _log.write(std::string("The drive could not be mounted again: ") + failure.what());
    }
}

} // namespace ferrobank::drive
