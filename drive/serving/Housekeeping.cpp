#include "serving/Housekeeping.h"

#include "exporting/Snapshot.h"
#include "figures/DeviceCounters.h"
#include "figures/DisplayText.h"
#include "figures/IdlePriority.h"
#include "figures/TreeWalk.h"
#include "figures/Usage.h"
#include "platform/Failure.h"
#include "platform/Guarded.h"
#include "sharing/ReadingPass.h"
#include "sharing/Scanner.h"
#include "state/Work.h"

#include <fcntl.h>

#include <algorithm>
#include <ctime>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr std::int64_t kDaySeconds = 24 * 60 * 60;
constexpr double kReadingShare = 0.25;
constexpr std::size_t kMostLogged = 100;
constexpr std::chrono::seconds kProgressStep{1};
constexpr std::chrono::seconds kPowerStep{10};

/// A clock that was set back must not put a pass off for years.
bool isOlderThan(std::int64_t then, std::int64_t now, std::int64_t seconds)
{
    return then > now || now - then > seconds;
}

/// What the kernel has counted on the volume; 0 where it cannot be asked.
std::uint64_t errorsOf(const std::filesystem::path& root)
{
    const FileDescriptor folder(::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::optional<DeviceErrors> errors = folder ? deviceErrors(folder.get()) : std::nullopt;
    return errors ? errors->sum() : 0;
}

std::vector<std::string> displayNames(const std::vector<std::string>& files)
{
    std::vector<std::string> names;
    for (const std::string& file : files) {
        names.push_back(displayName(file));
    }
    return names;
}

} // namespace

HousekeepingPace HousekeepingPace::usual()
{
    HousekeepingPace pace;
    pace.wallClock = [] { return static_cast<std::int64_t>(::time(nullptr)); };
    pace.monotonicClock = std::chrono::steady_clock::now;
    pace.conditions = [] { return currentConditions(); };
    pace.walkAllowed = mayWalk;
    return pace;
}

Housekeeping::Housekeeping(const Paths& paths, Log log, std::filesystem::path mountPoint, std::string uuid,
                           HousekeepingMemory memory, HousekeepingPace pace, Mailbox& mailbox)
    : _paths(paths),
      _index(paths.index),
      _unreadable(paths.unreadable),
      _log(std::move(log)),
      _root(std::move(mountPoint)),
      _uuid(std::move(uuid)),
      _memory(memory),
      _pace(std::move(pace)),
      _mailbox(mailbox),
      _held(memory.held),
      _readingDue(memory.readingDue),
      _thread([this](const std::stop_token& stop) { run(stop); })
{}

Housekeeping::~Housekeeping()
{
    _thread.request_stop();
    {
        const std::lock_guard lock(_mutex);
        _ending = true;
        _pass.request_stop();
    }
    _thread.join();
}

void Housekeeping::setSharing(Sharing sharing)
{
    const std::lock_guard lock(_mutex);
    _paused = sharing == Sharing::Paused;
    if (_paused) {
        _shareNow = false;
        _pass.request_stop();
    }
}

void Housekeeping::holdSharing(Held held)
{
    const std::lock_guard lock(_mutex);
    _held = held == Held::Yes;
    if (_held) {
        _shareNow = false;
        if (_work == Work::Sharing || _work == Work::SharingNow) {
            _pass.request_stop();
        }
    }
}

void Housekeeping::shareNow()
{
    const std::lock_guard lock(_mutex);
    if (_paused || _work == Work::SharingNow) {
        return;
    }
    _shareNow = true;
    // What is at work continues later; a pass that takes its time is followed by one that does not.
    if (_work != Work::None) {
        _pass.request_stop();
    }
    _wake.notify_all();
}

void Housekeeping::readSoon()
{
    const std::lock_guard lock(_mutex);
    _readingDue = true;
}

void Housekeeping::allRead(std::uint64_t unreadableFiles)
{
    const std::lock_guard lock(_mutex);
    _readingDue = false;
    _memory.hadUnreadable = unreadableFiles > 0;
    if (_work == Work::Reading) {
        _pass.request_stop();
    }
}

std::optional<std::stop_token> Housekeeping::begin(Work work)
{
    const std::lock_guard lock(_mutex);
    if (_paused || _ending) {
        return std::nullopt;
    }
    if (_pass.stop_requested()) {
        _pass = std::stop_source();
    }
    _work = work;
    return _pass.get_token();
}

void Housekeeping::end()
{
    const std::lock_guard lock(_mutex);
    _work = Work::None;
}

void Housekeeping::run(const std::stop_token& stop)
{
    clearUp(stop);
    useIdlePriority();
    RepeatedLog trouble(_log);
    while (!stop.stop_requested()) {
        guarded([&] { lookOnce(stop); }, [&](const std::string& words) { trouble.write(words); });
        end(); // also after a pass that threw
        std::unique_lock lock(_mutex);
        _wake.wait_for(lock, stop, _pace.look, [this] { return _shareNow && !_paused; });
    }
}

/// An export that was killed leaves its snapshot, which holds on to the space of whatever is deleted since.
void Housekeeping::clearUp(const std::stop_token& stop) const
{
    try {
        // One that is at work now needs its own.
        if (hasLeftoverSnapshots(_root)) {
            if (const std::optional<WorkLock> work = WorkLock::tryTake(_paths, "serve")) {
                removeLeftoverSnapshots(_root, stop);
            }
        }
    } catch (const std::exception& failure) {
        _log.write(failure.what());
    }
}

void Housekeeping::lookOnce(const std::stop_token& stop)
{
    const std::optional<std::uint64_t> generation = this->generation();
    if (!generation) {
        return;
    }
    if (_seenGeneration != generation) {
        _seenGeneration = generation;
        _changed = _pace.monotonicClock();
    }
    std::optional<LastWalk> last;
    if (_memory.walkedGeneration) {
        last = LastWalk{.generation = *_memory.walkedGeneration,
                        .duration = _lastWalk.duration,
                        .sinceItsEnd = _pace.monotonicClock() - _walkEnd};
    }
    if (_pace.walkAllowed(last, *generation)) {
        walk(*generation, stop);
    }
    if (stop.stop_requested()) {
        return;
    }
    lookAfterSharing(*generation);
    if (!stop.stop_requested()) {
        lookAfterReading();
    }
}

void Housekeeping::lookAfterReading()
{
    const std::int64_t now = _pace.wallClock();
    bool due = false;
    bool hadUnreadable = false;
    {
        const std::lock_guard lock(_mutex);
        due = _readingDue;
        hadUnreadable = _memory.hadUnreadable;
    }
    const std::int64_t step = hadUnreadable ? kDaySeconds : 7 * kDaySeconds;
    if (due) {
        read(Reading::Due);
    } else if (_memory.lastReading == 0) {
        // A new drive has been written just now; its first reading is due in a week.
        _memory.lastReading = now;
        _mailbox.post([now](State& state) { state.integrity.lastReading = now; });
    } else if (isOlderThan(_memory.lastReading, now, step) &&
               scanWait(conditions(Urgency::None)) == ScanWait::Nothing)
    {
        read(Reading::Weekly);
    }
}

ScanConditions Housekeeping::conditions(Urgency urgency) const
{
    ScanConditions conditions = _pace.conditions();
    conditions.sinceLastChange = _pace.monotonicClock() - _changed;
    conditions.urgency = urgency;
    return conditions;
}

std::optional<SharingWait> Housekeeping::sharingWaitsFor(std::uint64_t generation)
{
    const auto now = _pace.monotonicClock();
    if (_sharedGeneration == generation) {
        _waitingSince.reset();
    } else if (!_waitingSince) {
        _waitingSince = now;
    }
    {
        const std::lock_guard lock(_mutex);
        if (_paused) {
            return SharingWait::Export;
        }
        if (_shareNow) {
            return std::nullopt;
        }
        if (_held) {
            return SharingWait::Resume;
        }
    }
    if (!_waitingSince) {
        return SharingWait::Changes;
    }
    const FirstPass first = _memory.lastSharing == 0 ? FirstPass::Yes : FirstPass::No;
    const bool isOld = isOlderThan(_memory.lastSharing, _pace.wallClock(), kDaySeconds);
    const LastPassOld old = first == FirstPass::No && isOld ? LastPassOld::Yes : LastPassOld::No;
    switch (scanWait(conditions(urgencyOf(now - *_waitingSince, first, old)))) {
    case ScanWait::Nothing:
        return std::nullopt;
    case ScanWait::Quiet:
        return SharingWait::Quiet;
    case ScanWait::Load:
        return SharingWait::Load;
    case ScanWait::Power:
        return SharingWait::Power;
    }
    return std::nullopt;
}

void Housekeeping::lookAfterSharing(std::uint64_t generation)
{
    const std::optional<SharingWait> wait = sharingWaitsFor(generation);
    if (wait) {
        postWait(*wait);
        const std::int64_t now = _pace.wallClock();
        // Nothing new to share counts as a pass, or an untouched drive would seem neglected.
        if (*wait == SharingWait::Changes && isOlderThan(_memory.lastSharing, now, kDaySeconds)) {
            _memory.lastSharing = now;
            _mailbox.post([now](State& state) { state.sharing.last = now; });
        }
        return;
    }
    Work manner = Work::Sharing;
    {
        const std::lock_guard lock(_mutex);
        manner = std::exchange(_shareNow, false) ? Work::SharingNow : Work::Sharing;
    }
    share(generation, manner);
}

void Housekeeping::postWait(SharingWait wait)
{
    if (_postedWait != wait) {
        _postedWait = wait;
        _mailbox.post([wait](State& state) { state.sharing.waitsFor = wait; });
    }
}

void Housekeeping::postProgress(Work work, std::uint64_t done, std::uint64_t total)
{
    // Each change is written to a file and read by whoever watches; nobody reads faster than this.
    const auto now = std::chrono::steady_clock::now();
    if (done != 0 && now - _progressPosted < kProgressStep) {
        return;
    }
    _progressPosted = now;
    _mailbox.post([work, done, total](State& state) {
        (work == Work::Reading ? state.integrity.reading : state.sharing.running) =
            WorkProgress{.done = done, .total = total};
    });
}

std::optional<std::uint64_t> Housekeeping::generation() const
{
    const FileDescriptor root(::open(_root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::optional<VolumeState> volume = root ? volumeState(root.get()) : std::nullopt;
    return volume && volume->uuid == _uuid ? filesGeneration(root.get(), _uuid) : std::nullopt;
}

/// What the files take of the drive, data on its way included; nothing while the space guard is being
/// changed, whose part cannot be told then.
std::optional<std::uint64_t> Housekeeping::bytesTaken() const
{
    for (int attempt = 0; attempt < 3; ++attempt) {
        const std::uint64_t guard = _pace.guardBytes();
        const std::optional<std::uint64_t> used = bytesInUse(_uuid, guard);
        const std::uint64_t coming = bytesOnTheirWay(_uuid);
        if (used && _pace.guardBytes() == guard) {
            return *used + coming;
        }
    }
    return std::nullopt;
}

void Housekeeping::postUsage(std::uint64_t bytes, std::optional<std::uint64_t> inUse,
                             std::uint64_t generation)
{
    _memory.walkedGeneration = generation;
    _memory.bytes = bytes;
    _mailbox.post([bytes, inUse, generation](State& state) {
        state.volumeUsed = bytes;
        if (inUse) {
            state.saved = savedBytes(bytes, *inUse);
        }
        state.walkGeneration = generation;
    });
}

void Housekeeping::walk(std::uint64_t generation, const std::stop_token& stop)
{
    const auto begin = _pace.monotonicClock();
    UsageSum sum;
    FileDescriptor root(::open(_root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::optional<VolumeState> volume = root ? volumeState(root.get()) : std::nullopt;
    if (!volume || volume->uuid != _uuid) {
        return;
    }
    const std::optional<std::uint64_t> before = bytesTaken();
    const WalkEnd end = walkTree(std::move(root), sum, stop);
    const std::optional<std::uint64_t> after = bytesTaken();
    _walkEnd = _pace.monotonicClock();
    _lastWalk.duration = _walkEnd - begin;
    if (end != WalkEnd::Cancelled) {
        // What came or went during the walk may be in the sum or not: the larger figure promises nothing too
        // much.
        const std::optional<std::uint64_t> inUse = before && after ? std::max(before, after) : std::nullopt;
        postUsage(sum.usage().bytes, inUse, generation);
    }
}

void Housekeeping::share(std::uint64_t generation, Work manner)
{
    const std::optional<std::stop_token> pass = begin(manner);
    if (!pass) {
        return;
    }
    ScanSettings settings;
    settings.root = _root;
    settings.indexFolder = _index;
    settings.quietSeconds = manner == Work::SharingNow ? 0 : _pace.quietSeconds;
    settings.processorShare = manner == Work::SharingNow ? 1 : settings.processorShare;
    auto looked = _pace.monotonicClock();
    settings.onProgress = [&, this](std::uint64_t done, std::uint64_t total) {
        postProgress(manner, done, total);
        const auto now = _pace.monotonicClock();
        if (manner == Work::Sharing && now - looked >= kPowerStep) {
            looked = now;
            if (scanWait(conditions(Urgency::LongOverdue)) == ScanWait::Power) {
                const std::lock_guard lock(_mutex);
                _pass.request_stop();
            }
        }
    };
    postProgress(manner, 0, 0);
    const SharingResult result = shareRepeatedData(settings, *pass);
    end();
    if (result.complete()) {
        _memory.lastSharing = _pace.wallClock();
        // What was passed over is looked at again, and so is what a pass has changed: another one that finds
        // nothing costs little and proves that this is all.
        const bool isAll = result.filesAtWork == 0 && result.bytesShared == 0;
        _sharedGeneration = isAll ? std::optional(generation) : std::nullopt;
        _waitingSince.reset();
    } else if (!result.error.empty()) {
        // A drive that takes no changes is not tried again before something has changed.
        _sharedGeneration = generation;
    }
    tell(result, manner);
}

void Housekeeping::tell(const SharingResult& result, Work manner)
{
    const std::int64_t last = _memory.lastSharing;
    _postedWait.reset();
    _mailbox.post([result, last, manner](State& state) {
        state.sharing.last = last;
        state.sharing.seconds = result.duration.count();
        state.sharing.shared = result.bytesShared;
        state.sharing.running.reset();
        state.sharing.askedPasses += manner == Work::SharingNow ? 1 : 0;
        if (!result.cancelled) {
            state.sharing.error = result.error.empty() ? std::nullopt : std::optional(result.error);
        }
    });
    if (!result.error.empty()) {
        _log.write("Sharing repeated data: " + result.error);
    } else if (result.bytesShared > 0) {
        _log.write("Shared " + displayBytes(result.bytesShared) + " of repeated data" +
                   (result.cancelled ? "; the pass was ended early and continues later." : "."));
    }
}

void Housekeeping::read(Reading reading)
{
    const std::optional<std::stop_token> pass = begin(Work::Reading);
    if (!pass) {
        return;
    }
    const std::uint64_t errorsBefore = errorsOf(_root);
    ReadingSettings settings;
    settings.root = _root;
    settings.memory = _index;
    settings.processorShare = reading == Reading::Due ? 1 : kReadingShare;
    const std::uint64_t total = _memory.bytes;
    settings.onProgress = [this, total](std::uint64_t done) {
        postProgress(Work::Reading, done, std::max(done, total));
    };
    postProgress(Work::Reading, 0, total);
    const ReadingResult result = readAllFiles(settings, *pass);
    end();
    if (result.cancelled || !result.error.empty()) {
        _mailbox.post([](State& state) { state.integrity.reading.reset(); });
        return;
    }
    const std::int64_t now = _pace.wallClock();
    _memory.lastReading = now;
    allRead(result.unreadableFiles);
    try {
        writeUnreadableList(_unreadable, result.unreadable);
    } catch (const Failure& failure) {
        _log.write(failure.text());
    }
    // The reading itself makes the kernel count what it cannot read; whatever came to the count while
    // everything could be read is looked into once more.
    const std::uint64_t settled = result.unreadableFiles > 0 ? errorsOf(_root) : errorsBefore;
    // Before the state: whoever sees that the reading is done may look into the log.
    _log.write("All " + std::to_string(result.files) + " files were read; " +
               std::to_string(result.unreadableFiles) + " of them cannot be.");
    for (std::size_t index = 0; index < std::min(result.unreadable.size(), kMostLogged); ++index) {
        _log.write("Cannot be read: " + displayName(result.unreadable[index]));
    }
    _mailbox.post([result, now, settled](State& state) {
        state.integrity.lastReading = now;
        state.integrity.reading.reset();
        state.integrity.readingDue = ReadingReason::None;
        state.integrity.settledErrors = settled;
        state.integrity.setUnreadable(result.unreadableFiles, displayNames(result.unreadable));
    });
}

} // namespace ferrobank::drive
