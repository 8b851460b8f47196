#include "commands/RestartCommand.h"

#include "commands/ServeCommand.h"
#include "commands/ServedVolume.h"
#include "control/ControlClient.h"
#include "login/LoginStart.h"
#include "platform/Failure.h"
#include "state/ServerProbe.h"
#include "state/Work.h"
#include "store/StoreExamination.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <optional>
#include <thread>

namespace ferrobank::drive {

namespace {

constexpr std::chrono::seconds kMountLimit{30};
constexpr std::chrono::seconds kServingLimit{5};
constexpr std::chrono::seconds kEndLimit{5};
constexpr std::chrono::milliseconds kStep{20};

/// A serving process of its own session, with nothing of ours: two forks, so that it is nobody's child.
void startDetached(const std::string& program)
{
    const pid_t child = ::fork();
    if (child < 0) {
        throw systemFailure("Cannot start the drive", errno);
    }
    if (child == 0) {
        ::setsid();
        if (::fork() != 0) {
            ::_exit(0);
        }
        const int nothing = ::open("/dev/null", O_RDWR);
        for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            ::dup2(nothing, standard);
        }
        ::close_range(STDERR_FILENO + 1, ~0U, 0);
        ::execl(program.c_str(), program.c_str(), "serve", nullptr);
        ::_exit(127);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
}

bool waitForServing(const Paths& paths, std::chrono::seconds duration)
{
    const auto limit = std::chrono::steady_clock::now() + duration;
    while (std::chrono::steady_clock::now() < limit) {
        if (const ServerProbe probe = ServerProbe::probe(paths);
            probe.running && ask(probe.socket(), {.operation = Operation::Ping}, kPingLimit))
        {
            return true;
        }
        std::this_thread::sleep_for(kStep);
    }
    return false;
}

/// Whether the serving process that did not answer is at its end: one that was killed may need a moment more.
bool endsSoon(const Paths& paths)
{
    const auto limit = std::chrono::steady_clock::now() + kEndLimit;
    while (ServerProbe::probe(paths).running) {
        if (std::chrono::steady_clock::now() >= limit) {
            return false;
        }
        std::this_thread::sleep_for(kStep);
    }
    return true;
}

void require(const std::optional<Reply>& reply)
{
    if (!reply) {
        throw Failure("The drive's background process did not answer. The log may name the reason.",
                      "no-answer");
    }
    if (!reply->ok) {
        throw Failure(reply->text, reply->code);
    }
}

} // namespace

void ensureServing(const Paths& paths, const Log& log)
{
    if (ServerProbe::probe(paths).running) {
        return;
    }
    if (isReadOnlyHost(paths.store)) {
        throw Failure(readOnlyHostWords(), "host-read-only");
    }
    if (LoginStart(paths, log).start() && waitForServing(paths, kServingLimit)) {
        return;
    }
    startDetached(ownPath());
    if (!waitForServing(paths, kServingLimit)) {
        throw Failure("The drive's background process does not start. The log may name the reason.",
                      "not-serving");
    }
}

void waitUntilMounted(const Paths& paths)
{
    const auto limit = std::chrono::steady_clock::now() + kMountLimit;
    for (;;) {
        const ServerProbe probe = ServerProbe::probe(paths);
        const std::optional<Volume> volume = findServedVolume(paths, probe);
        if (probe.state && probe.state->phase == Phase::Mounted && volume && !volume->readOnly) {
            return;
        }
        if (probe.state && probe.state->phase == Phase::Failed && probe.state->attachError) {
            throw Failure(probe.state->attachError->text, probe.state->attachError->code);
        }
        if (std::chrono::steady_clock::now() >= limit) {
            throw Failure("The drive was not mounted within 30 seconds. The log may name the reason.",
                          "timeout");
        }
        std::this_thread::sleep_for(kStep);
    }
}

void restart(const Paths& paths, const Log& log, KeepMounted keepMounted)
{
    std::optional<WorkLock> work;
    if (keepMounted == KeepMounted::No) {
        // The lock is a file: on such a disk its failure would be told instead of the reason.
        if (isReadOnlyHost(paths.store)) {
            throw Failure(readOnlyHostWords(), "host-read-only");
        }
        work.emplace(WorkLock::take(paths, "restart"));
    }
    if (const ServerProbe probe = ServerProbe::probe(paths); probe.running) {
        const Operation operation = keepMounted == KeepMounted::Yes ? Operation::Reexec : Operation::Restart;
        const std::optional<Reply> reply = ask(probe.socket(), {.operation = operation}, kRestartLimit);
        if (reply || !endsSoon(paths)) {
            require(reply);
            if (operation == Operation::Restart) {
                waitUntilMounted(paths);
            }
            return;
        }
    }
    ensureServing(paths, log);
    // Somebody asked for it, so the desktop may ask back for a password; at login it may not.
    require(ask(ServerProbe::probe(paths).socket(), {.operation = Operation::Attach}, kRestartLimit));
    waitUntilMounted(paths);
}

} // namespace ferrobank::drive
