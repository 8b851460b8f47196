#pragma once

#include "control/ControlServer.h"
#include "mounting/Attachment.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "serving/Locks.h"
#include "serving/Mailbox.h"
#include "serving/Workers.h"
#include "state/Figures.h"
#include "state/State.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ferrobank::drive {

/// What the serving process knows about itself.
struct ServingProgram {
    /// The path that the tool was started from: what lies beside it later is what this process becomes on a
    /// restart.
    std::string path;
    /// Of the program that runs, which is the one beside that path.
    FileIdentity identity;
    std::string version;
};

/// The serving process: attaches the drive, keeps it so, answers commands, and unmounts at the end. One
/// object per process, `run()` once, on the main thread, which must be the only one by then.
///
/// | phase    | meaning                                                   | left by                         |
/// |----------|-----------------------------------------------------------|---------------------------------|
/// | starting | an attach is being tried, or tried again after a refusal  | mounted, failed                 |
/// | mounted  | the drive is there, the workers run                       | stopping, failed (ejected)      |
/// | failed   | `attachError` says why; nothing is tried by itself        | starting (restart), mounted     |
/// | stopping | unmounted on request                                      | the end of the process          |
class Server {
public:
    Server(Paths paths, Log log, ServingProgram program, Locks locks, std::unique_ptr<BackEnd> backEnd);
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server();

    /// The space guard that an earlier process kept open; before `run()`.
    void adoptGuard(FileDescriptor guard) { _guard = std::move(guard); }

    /// Serves until SIGTERM, SIGINT or a request to end; the process's exit status. `waiting` gets the
    /// outcome of the first attach.
    int run(FileDescriptor waiting);

private:
    using Clock = std::chrono::steady_clock;

    enum class MountsChanged { No, Yes };

    void tryAttach(Interaction interaction);
    void becomeMounted(const Volume& volume);
    void becomeFailed(const Problem& problem);
    void lookAtMounts(MountsChanged mountsChanged);
    void lookAtDevice();
    void handleRequests();
    void handle(PendingRequest& request);
    void restart(PendingRequest& request);
    void becomeNewProgram(FileDescriptor waiting);
    void stop(const PendingRequest& request);
    void detachWithin(std::chrono::seconds limit);
    void endGently();
    void startWorkers();
    void dropGuard();
    void waitForEvents();
    /// One step of a turn: what goes wrong in it is logged, and the others go on.
    void attempt(const std::function<void()>& step);
    void lookAtTimes();
    void handleSignals();
    void listen();
    void publish();
    void remember(const Figures& known);
    void keepFigures();
    void keepReadingDue();
    void recordGeneration();
    void compareStore();
    void readSoon(ReadingReason reason);
    void noteFilesRead(const Request& request);
    void acceptStore(PendingRequest request);
    [[nodiscard]] Reply attachReply() const;
    [[nodiscard]] int pollTimeout() const;

    Paths _paths;
    Log _log;
    RepeatedLog _trouble;
    ServingProgram _program;
    Locks _locks;
    Attachment _attachment;
    State _state;
    State _published;
    Figures _knownFigures;
    ReadingReason _markedReason = ReadingReason::None;
    Mailbox _mailbox;
    FileDescriptor _signals;
    FileDescriptor _mountTable;
    std::unique_ptr<ControlServer> _control;
    FileDescriptor _runtimeWatch; ///< readable when the runtime folder was moved or removed
    std::optional<Volume> _volume;
    std::unique_ptr<Workers> _workers;
    FileDescriptor _guard; ///< between two sets of workers
    std::optional<Clock::time_point> _retryAt;
    Clock::time_point _retryUntil;
    Clock::time_point _deviceLook;
    std::optional<Clock::time_point> _stopLimit;
    std::optional<Clock::time_point> _exportLimit;
    bool _ended = false;
    /// A step of this turn went wrong.
    bool _troubled = false;
};

} // namespace ferrobank::drive
