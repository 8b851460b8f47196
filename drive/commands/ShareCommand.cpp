#include "commands/ShareCommand.h"

#include "commands/ProgressBar.h"
#include "control/ControlClient.h"
#include "figures/DisplayText.h"
#include "platform/Failure.h"
#include "state/ServerProbe.h"

#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <string>
#include <thread>

namespace ferrobank::drive {

namespace {

constexpr std::chrono::milliseconds kStep{200};
/// A pass that was asked for begins as soon as the one at work has noticed.
constexpr std::chrono::seconds kBeginLimit{30};

ServerProbe servedDrive(const Paths& paths)
{
    ServerProbe server = ServerProbe::probe(paths);
    if (!server.running || !server.state || server.state->phase != Phase::Mounted) {
        throw Failure("The drive is not mounted. To mount it, run: ferrobank restart", "not-mounted");
    }
    return server;
}

void request(const ServerProbe& server, Operation operation)
{
    const std::optional<Reply> reply = ask(server.socket(), {.operation = operation}, kPingLimit);
    if (!reply) {
        throw Failure("The drive's background process did not answer. The log may name the reason.",
                      "no-answer");
    }
    if (!reply->ok) {
        throw Failure(reply->text, reply->code);
    }
}

/// Ends the line of the bar, if there was one, whatever happens.
class Bar {
public:
    Bar() : _terminal(::isatty(STDOUT_FILENO) == 1) {}

    Bar(const Bar&) = delete;
    Bar& operator=(const Bar&) = delete;

    ~Bar()
    {
        if (_shown) {
            std::fputs("\r\033[K", stdout);
            std::fflush(stdout);
        }
    }

    void show(const WorkProgress& progress)
    {
        if (_terminal) {
            std::fputs(("\r" + progressLine("Sharing", progress.done, progress.total) + "\033[K").c_str(),
                       stdout);
            std::fflush(stdout);
            _shown = true;
        }
    }

private:
    bool _terminal = false;
    bool _shown = false;
};

/// The state after the end of the pass that was asked for.
SharingState awaitPass(const Paths& paths, const ServerProbe& asked)
{
    Bar bar;
    auto limit = std::chrono::steady_clock::now() + kBeginLimit;
    for (;;) {
        const ServerProbe now = servedDrive(paths);
        if (now.process != asked.process) {
            throw Failure("The drive's background process was started anew; the pass continues later.",
                          "ended");
        }
        const SharingState& sharing = now.state->sharing;
        if (sharing.askedPasses > asked.state->sharing.askedPasses) {
            return sharing;
        }
        if (sharing.running) {
            bar.show(*sharing.running);
            limit = std::chrono::steady_clock::now() + kBeginLimit;
        } else if (std::chrono::steady_clock::now() >= limit) {
            throw Failure("The pass did not begin; the log may name the reason.", "not-begun");
        }
        std::this_thread::sleep_for(kStep);
    }
}

} // namespace

void shareNow(const Paths& paths)
{
    const ServerProbe server = servedDrive(paths);
    request(server, Operation::ShareNow);
    const SharingState result = awaitPass(paths, server);
    if (result.error) {
        throw Failure(*result.error, "sharing");
    }
    const auto seconds = static_cast<long>(std::ceil(result.seconds));
    const std::string time = std::to_string(seconds) + (seconds == 1 ? " second" : " seconds");
    if (result.shared > 0) {
        std::printf("Shared %s of repeated data in %s.\n", displayBytes(result.shared).c_str(), time.c_str());
    } else {
        std::printf("Found nothing more to share in %s.\n", time.c_str());
    }
}

void pauseSharing(const Paths& paths)
{
    request(servedDrive(paths), Operation::HoldSharing);
    std::puts("Repeated data is not looked for any more. To go on, run: ferrobank share resume");
}

void resumeSharing(const Paths& paths)
{
    request(servedDrive(paths), Operation::Resume);
    std::puts("Repeated data is looked for again.");
}

} // namespace ferrobank::drive
