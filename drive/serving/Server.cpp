#include "serving/Server.h"

#include "figures/DeviceCounters.h"
#include "platform/Failure.h"
#include "platform/Files.h"
#include "platform/Guarded.h"
#include "serving/DescriptorStore.h"
#include "store/StoreExamination.h"
#include "store/StoreLength.h"
#include "store/Superblock.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/signalfd.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <thread>
#include <utility>

namespace ferrobank::drive {

namespace {

using namespace std::chrono_literals;

constexpr auto kRetryStep = 2s;
constexpr auto kRetryTime = 60s;
constexpr auto kDeviceLookStep = 60s;
constexpr auto kTroubleStep = 1s;
constexpr auto kPatienceAtEnd = 10s;

FileDescriptor takeSignals()
{
    sigset_t taken;
    sigemptyset(&taken);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&taken, number);
    }
    ::pthread_sigmask(SIG_BLOCK, &taken, nullptr);
    return FileDescriptor(::signalfd(-1, &taken, SFD_CLOEXEC | SFD_NONBLOCK));
}

} // namespace

Server::Server(Paths paths, Log log, ServingProgram program, Locks locks, std::unique_ptr<BackEnd> backEnd)
    : _paths(std::move(paths)),
      _log(std::move(log)),
      _trouble(_log),
      _program(std::move(program)),
      _locks(std::move(locks)),
      _attachment(_paths, _log, std::move(backEnd)),
      _signals(takeSignals()),
      _mountTable(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC)),
      _retryUntil(Clock::now() + kRetryTime),
      _deviceLook(Clock::now())
{
    if (!_signals || !_mountTable) {
        throw systemFailure("Cannot watch the system", errno);
    }
    _state.process = ::getpid();
    _state.bootId = bootId();
    _state.version = _program.version;
    _state.executablePath = _program.path;
    _state.executable = _program.identity;
    _state.backEnd = _attachment.backEndName();
    if (const std::optional<Figures> known = Figures::read(_paths.figures)) {
        remember(*known);
    }
}

void Server::remember(const Figures& known)
{
    _knownFigures = known;
    _state.uuid = known.uuid;
    _state.volumeUsed = known.volumeUsed;
    _state.saved = known.saved;
    _state.walkGeneration = known.walkGeneration;
    _state.since = known.since;
    _state.sharing.last = known.lastSharing;
    _state.space.guard = known.guard;
    _state.integrity.lastReading = known.lastReading;
    _state.integrity.unreadableFiles = known.unreadableFiles;
    _state.integrity.unreadable = known.unreadable;
    _state.integrity.settledErrors = known.settledErrors;
    _state.integrity.olderImage = known.olderImage;
    _state.sharing.paused = known.sharingPaused;
}

void Server::keepFigures()
{
    // Before the first mount there is no drive yet whose figures these could be.
    if (_state.since == 0) {
        return;
    }
    Figures figures{.uuid = _state.uuid,
                    .volumeUsed = _state.volumeUsed,
                    .saved = _state.saved,
                    .walkGeneration = _state.walkGeneration,
                    .guard = _state.space.guard,
                    .since = _state.since,
                    .lastReading = _state.integrity.lastReading,
                    .lastSharing = _state.sharing.last,
                    .unreadableFiles = _state.integrity.unreadableFiles,
                    .unreadable = _state.integrity.unreadable,
                    .generation = _knownFigures.generation,
                    .sharingPaused = _state.sharing.paused,
                    .settledErrors = _state.integrity.settledErrors,
                    .olderImage = _state.integrity.olderImage};
    if (figures != _knownFigures) {
        // Not worth writing it alone: every minute of a drive in use has another one.
        if (const std::optional<std::uint64_t> now = volumeGeneration(_state.uuid); _volume && now) {
            figures.generation = *now;
        }
        figures.write(_paths.figures);
        _knownFigures = figures;
    }
    keepReadingDue();
}

/// After the figures: what a reading has found must be kept before the word that it is due goes.
void Server::keepReadingDue()
{
    const ReadingReason reason = _state.integrity.readingDue;
    if (reason == _markedReason) {
        return;
    }
    if (reason == ReadingReason::None) {
        removeIfPresent(_paths.readingDue);
    } else {
        markReadingDue(_paths, reasonWord(reason));
    }
    _markedReason = reason;
}

/// How far the image is when nobody works on it any more, so that an older one is noticed.
void Server::recordGeneration()
{
    const std::optional<Superblock> superblock = readSuperblock(_paths.image);
    if (_knownFigures.uuid.empty() || !superblock || superblock->uuid != _knownFigures.uuid ||
        superblock->generation == _knownFigures.generation)
    {
        return;
    }
    try {
        Figures figures = _knownFigures;
        figures.generation = superblock->generation;
        figures.write(_paths.figures);
        _knownFigures = figures;
    } catch (const Failure& failure) {
        _log.write(failure.text());
    }
}

void Server::compareStore()
{
    if (isReadOnlyHost(_paths.store)) {
        throw Failure(readOnlyHostWords(), "host-read-only");
    }
    const std::optional<Superblock> superblock = readSuperblock(_paths.image);
    if (!superblock) {
        return;
    }
    switch (compareIdentity(_knownFigures.uuid, _knownFigures.generation, *superblock)) {
    case StoreIdentity::Same:
        return;
    case StoreIdentity::Other:
        throw Failure(otherStoreWords(), "store-other");
    case StoreIdentity::Older:
        break;
    }
    _log.write(olderStoreWords() + " It is at change " + std::to_string(superblock->generation) +
               ", the last one used was at " + std::to_string(_knownFigures.generation) + ".");
    _state.integrity.olderImage = true;
    markReadingDue(_paths, reasonWord(ReadingReason::LostChanges));
}

void Server::readSoon(ReadingReason reason)
{
    if (_state.integrity.readingDue == ReadingReason::None) {
        _state.integrity.readingDue = reason;
    }
    if (_workers) {
        _workers->readSoon();
    }
}

Server::~Server() = default;

int Server::run(FileDescriptor waiting)
{
    listen();
    _log.write("Ferrobank " + _program.version + " serves the drive.");
    tryAttach(waiting ? Interaction::MayAsk : Interaction::Silent);
    if (waiting) {
        const PendingRequest request{.request = {}, .connection = std::move(waiting)};
        request.answer(attachReply());
    }
    ::sd_notify(0, "READY=1");
    while (!_ended) {
        waitForEvents();
    }
    _control.reset();
    ::unlink(_paths.state().c_str());
    _log.write("Ferrobank ends.");
    return EXIT_SUCCESS;
}

Reply Server::attachReply() const
{
    if (_state.phase == Phase::Mounted) {
        return Reply::success();
    }
    const Problem problem =
        _state.attachError.value_or(Problem{.code = "not-mounted", .text = "The drive is not mounted yet."});
    return {.ok = false, .code = problem.code, .text = problem.text};
}

void Server::tryAttach(Interaction interaction)
{
    _retryAt.reset();
    _state.phase = Phase::Starting;
    _state.attachError.reset();
    publish();
    try {
        compareStore();
        becomeMounted(_attachment.attach(interaction));
    } catch (const Failure& failure) {
        // A login session may become active a moment after this process was started.
        if (failure.code() == "not-authorized" && interaction == Interaction::Silent &&
            Clock::now() < _retryUntil)
        {
            _retryAt = Clock::now() + kRetryStep;
            return;
        }
        becomeFailed({.code = failure.code(), .text = failure.text()});
    } catch (const std::exception& error) {
        becomeFailed(
            {.code = "failed", .text = std::string("The drive could not be mounted: ") + error.what() + "."});
    }
}

void Server::becomeMounted(const Volume& volume)
{
    _volume = volume;
    _state.phase = Phase::Mounted;
    _state.attachError.reset();
    _state.loop = volume.loop;
    _state.mount = volume.mountPoint.string();
    _state.readOnly = volume.readOnly;
    if (const std::optional<Superblock> superblock = readSuperblock(_paths.image)) {
        _state.uuid = superblock->uuid;
    }
    if (_state.since == 0) {
        _state.since = ::time(nullptr);
    }
    growVolume(_paths, volume.mountPoint, _log);
    // The attach may have mended something.
    _markedReason = reasonOf(readSmallFile(_paths.readingDue).value_or(std::string()));
    if (_markedReason != ReadingReason::None) {
        _state.integrity.readingDue = _markedReason;
    }
    startWorkers();
    lookAtDevice();
    publish();
}

void Server::becomeFailed(const Problem& problem)
{
    _workers.reset();
    dropGuard();
    _volume.reset();
    _state.phase = Phase::Failed;
    _state.attachError = problem;
    _state.loop.clear();
    _state.mount.clear();
    _state.readOnly = false;
    _log.write(problem.text);
    publish();
}

void Server::dropGuard()
{
    if (_guard) {
        _guard.reset();
        forgetKeptGuard();
    }
}

void Server::startWorkers()
{
    // Without them the drive is of use all the same; they are tried again with the next look at the device.
    if (_volume && !_volume->readOnly && !_workers) {
        attempt([this] {
            _workers = std::make_unique<Workers>(_paths, _log, *_volume, _state, _mailbox, std::move(_guard));
        });
    }
}

void Server::listen()
{
    // The socket has a thread of its own, so it has a memory of what was told of its own.
    _control = std::make_unique<ControlServer>(
        _paths.socket(), [trouble = RepeatedLog(_log)](const std::string& words) mutable {
            trouble.write("The drive's socket: " + words);
        });
    // Without the watch, the next look at the device notices as well.
    _runtimeWatch = FileDescriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (_runtimeWatch) {
        ::inotify_add_watch(_runtimeWatch.get(), _paths.runtime.c_str(), IN_MOVE_SELF | IN_DELETE_SELF);
    }
}

void Server::publish()
{
    const bool isClearedAway = ::access(_paths.socket().c_str(), F_OK) != 0;
    if (_state == _published && !isClearedAway) {
        return;
    }
    attempt([&] {
        // A runtime folder that was cleared away under us comes back, with a socket that can be reached.
        if (isClearedAway) {
            _control.reset();
            ensurePrivateFolder(_paths.runtime);
            listen();
        }
        replaceFile(_paths.state(), _state.toJson());
        _published = _state;
        keepFigures();
    });
}

void Server::attempt(const std::function<void()>& step)
{
    if (!guarded(step, [this](const std::string& words) { _trouble.write(words); })) {
        _troubled = true;
    }
}

int Server::pollTimeout() const
{
    Clock::time_point next = _deviceLook;
    for (const auto& limit : {_retryAt, _stopLimit, _exportLimit}) {
        next = limit ? std::min(next, *limit) : next;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
    return static_cast<int>(std::max<long long>(0, left.count()));
}

void Server::waitForEvents()
{
    // While no runtime folder can be made there is nobody to listen to; poll leaves out what is negative.
    std::array<pollfd, 5> events{{{.fd = _signals.get(), .events = POLLIN, .revents = 0},
                                  {.fd = _control ? _control->wakeUp() : -1, .events = POLLIN, .revents = 0},
                                  {.fd = _mailbox.wakeUp(), .events = POLLIN, .revents = 0},
                                  {.fd = _mountTable.get(), .events = POLLPRI, .revents = 0},
                                  {.fd = _runtimeWatch.get(), .events = POLLIN, .revents = 0}}};
    if (::poll(events.data(), events.size(), pollTimeout()) < 0) {
        return;
    }
    if (events[4].revents != 0) {
        _runtimeWatch.reset(); // the folder that comes back gets its own
    }
    _troubled = false;
    attempt([this] { _mailbox.applyTo(_state); });
    attempt([&] { lookAtMounts(events[3].revents != 0 ? MountsChanged::Yes : MountsChanged::No); });
    attempt([this] { lookAtTimes(); });
    attempt([this] { handleSignals(); });
    if (!_ended) {
        handleRequests();
        publish();
    }
    if (_troubled && !_ended) {
        // What went wrong may be there still, and its event too: it should not cost all of a processor.
        pollfd signals{.fd = _signals.get(), .events = POLLIN, .revents = 0};
        ::poll(&signals, 1, static_cast<int>(std::chrono::milliseconds(kTroubleStep).count()));
    }
}

void Server::lookAtTimes()
{
    const Clock::time_point now = Clock::now();
    _ended = _ended || (_stopLimit && now >= *_stopLimit);
    if (now >= _deviceLook) {
        _deviceLook = now + kDeviceLookStep;
        lookAtDevice();
    }
    if (_exportLimit && now >= *_exportLimit) {
        _exportLimit.reset();
        _state.exportState.reset();
        if (_workers) {
            _workers->setSharing(Housekeeping::Sharing::Allowed);
        }
    }
    if (_retryAt && now >= *_retryAt) {
        tryAttach(Interaction::Silent);
    }
}

void Server::lookAtMounts(MountsChanged mountsChanged)
{
    if (_state.phase == Phase::Starting || _state.phase == Phase::Stopping) {
        return;
    }
    const std::optional<Volume> found = findVolume(_paths.image, Recognise::ByFile);
    if (_volume && !found) {
        _workers.reset();
        _attachment.settleAfterEjection();
        becomeFailed(
            {.code = "ejected", .text = "The drive was ejected. Restart Ferrobank to mount it again."});
        return;
    }
    if (!_volume && found && mountsChanged == MountsChanged::Yes) {
        tryAttach(Interaction::Silent);
        return;
    }
    if (_volume && found && found->readOnly != _volume->readOnly) {
        _volume = found;
        _state.readOnly = found->readOnly;
        _state.attachError.reset();
        _workers.reset();
        startWorkers();
        if (found->readOnly) {
            const bool full = _state.space.level != SpaceLevel::Ok;
            _state.attachError =
                isReadOnlyHost(_paths.store) ? Problem{.code = "host-read-only", .text = readOnlyHostWords()}
                : full
                    ? Problem{.code = "read-only",
                              .text = "The drive stopped taking changes because this computer ran out of "
                                      "space. Free "
                                      "some space, then restart Ferrobank."}
                    : Problem{.code = "read-only",
                              .text = "The drive stopped taking changes after an error. Restart Ferrobank."};
            _log.write(_state.attachError->text);
        }
    }
}

void Server::lookAtDevice()
{
    if (!_volume) {
        return;
    }
    if (!_workers) {
        startWorkers();
    }
    const FileDescriptor folder(::open(_volume->mountPoint.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::optional<DeviceErrors> errors = folder ? deviceErrors(folder.get()) : std::nullopt;
    if (!errors) {
        return;
    }
    const std::uint64_t sum = errors->sum();
    if (sum > _state.integrity.deviceErrors) {
        _log.write("The drive's store has shown " + std::to_string(sum) + " read or write errors.");
    }
    _state.integrity.deviceErrors = sum;
    // While some files are known that cannot be read, whoever opens them makes the kernel count again.
    if (sum > _state.integrity.settledErrors && _state.integrity.unreadableFiles == 0) {
        readSoon(ReadingReason::DeviceErrors);
    }
}

void Server::handleSignals()
{
    signalfd_siginfo signal{};
    while (!_ended && ::read(_signals.get(), &signal, sizeof signal) == static_cast<ssize_t>(sizeof signal)) {
        if (signal.ssi_signo == SIGHUP) {
            becomeNewProgram(FileDescriptor());
        } else {
            endGently();
        }
    }
}

void Server::handleRequests()
{
    while (!_ended && _control) {
        std::optional<PendingRequest> request = _control->next();
        if (!request) {
            return;
        }
        std::optional<std::string> refusal;
        attempt([&] {
            try {
                handle(*request);
            } catch (const std::exception& error) {
                refusal = error.what();
                throw;
            }
        });
        // Only now: whoever reads the answer may look into the log.
        if (refusal && _volume && !_workers) {
            startWorkers();
        }
        if (refusal && request->connection) {
            request->answer({.ok = false, .code = "failed", .text = *refusal});
        }
    }
}

void Server::endGently()
{
    _ended = true;
    ::sd_notify(0, "STOPPING=1");
    if (!_volume) {
        return;
    }
    try {
        detachWithin(kPatienceAtEnd);
    } catch (const std::exception& failure) {
        const FileDescriptor folder(::open(_volume->mountPoint.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (folder) {
            ::syncfs(folder.get());
        }
        _log.write(std::string("The drive stays mounted: ") + failure.what());
    }
}

} // namespace ferrobank::drive
