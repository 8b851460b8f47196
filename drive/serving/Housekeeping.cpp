#include "serving/Housekeeping.h"

#include "figures/DeviceCounters.h"
#include "figures/DisplayText.h"
#include "figures/IdlePriority.h"
#include "figures/TreeWalk.h"
#include "figures/Usage.h"
#include "platform/Guarded.h"
#include "sharing/ReadingPass.h"
#include "sharing/Scanner.h"

#include <fcntl.h>

#include <algorithm>
#include <ctime>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr std::int64_t kDaySeconds = 24 * 60 * 60;
constexpr double kReadingShare = 0.25;

/// A clock that was set back must not put a pass off for years.
bool isOlderThan(std::int64_t then, std::int64_t now, std::int64_t seconds)
{
    return then > now || now - then > seconds;
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
    : _index(paths.index),
      _log(std::move(log)),
      _root(std::move(mountPoint)),
      _uuid(std::move(uuid)),
      _memory(memory),
      _pace(std::move(pace)),
      _mailbox(mailbox),
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
        _pass.request_stop();
    }
}

std::stop_token Housekeeping::passToken()
{
    const std::lock_guard lock(_mutex);
    if (!_paused && !_ending && _pass.stop_requested()) {
        _pass = std::stop_source();
    }
    return _pass.get_token();
}

void Housekeeping::run(const std::stop_token& stop)
{
    useIdlePriority();
    RepeatedLog trouble(_log);
    while (!stop.stop_requested()) {
        guarded([&] { lookOnce(stop); }, [&](const std::string& words) { trouble.write(words); });
        std::unique_lock lock(_mutex);
        _wake.wait_for(lock, stop, _pace.look, [] { return false; });
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
    const std::int64_t now = _pace.wallClock();
    if (_sharedGeneration == generation) {
        // Nothing new to share counts as a pass, or an untouched drive would seem neglected.
        if (isOlderThan(_memory.lastSharing, now, kDaySeconds)) {
            _memory.lastSharing = now;
            _mailbox.post([now](State& state) { state.sharing.last = now; });
        }
    } else if (!stop.stop_requested() && mayWork(_memory.lastSharing)) {
        share(*generation);
    }
    const std::int64_t readingStep = _memory.hadUnreadable ? kDaySeconds : 7 * kDaySeconds;
    if (_memory.lastReading == 0) {
        // A new drive has been written just now; its first reading is due in a week.
        _memory.lastReading = now;
        _mailbox.post([now](State& state) { state.integrity.lastReading = now; });
    } else if (!stop.stop_requested() && isOlderThan(_memory.lastReading, now, readingStep) && mayWork(now)) {
        read();
    }
}

bool Housekeeping::mayWork(std::int64_t lastPass) const
{
    ScanConditions conditions = _pace.conditions();
    conditions.sinceLastChange = _pace.monotonicClock() - _changed;
    if (isOlderThan(lastPass, _pace.wallClock(), kDaySeconds) && lastPass != 0) {
        // A drive that is never quiet gets its pass all the same; files at work are left alone one by one.
        conditions.sinceLastChange = std::chrono::hours(24);
    }
    return mayScan(conditions);
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

void Housekeeping::share(std::uint64_t generation)
{
    ScanSettings settings;
    settings.root = _root;
    settings.indexFolder = _index;
    settings.quietSeconds = _pace.quietSeconds;
    const std::stop_token pass = passToken();
    if (pass.stop_requested()) {
        return;
    }
    const SharingResult result = shareRepeatedData(settings, pass);
    if (result.cancelled) {
        return;
    }
    const std::int64_t now = _pace.wallClock();
    _memory.lastSharing = now;
    // What the pass itself changed is not worth another one.
    _sharedGeneration = result.error.empty() ? this->generation().value_or(generation) : generation;
    _mailbox.post([result, now](State& state) {
        state.sharing.last = now;
        state.sharing.seconds = result.duration.count();
        state.sharing.shared = result.bytesShared;
        state.sharing.error = result.error.empty() ? std::nullopt : std::optional(result.error);
    });
    if (!result.error.empty()) {
        _log.write("Sharing repeated data: " + result.error);
        return;
    }
    if (result.filesShared > 0) {
        _log.write("Shared " + displayBytes(result.bytesShared) + " of repeated data in " +
                   std::to_string(result.filesShared) + " files.");
    }
}

void Housekeeping::read()
{
    const std::stop_token pass = passToken();
    if (pass.stop_requested()) {
        return;
    }
    const ReadingResult result = readAllFiles(_root, kReadingShare, pass);
    if (result.cancelled || !result.error.empty()) {
        return;
    }
    const std::int64_t now = _pace.wallClock();
    _memory.lastReading = now;
    _memory.hadUnreadable = result.unreadableFiles > 0;
    _mailbox.post([result, now](State& state) {
        state.integrity.lastReading = now;
        state.integrity.unreadableFiles = result.unreadableFiles;
        state.integrity.unreadable = result.unreadable;
        state.integrity.unreadable.resize(std::min<std::size_t>(state.integrity.unreadable.size(), 3));
    });
    _log.write("All " + std::to_string(result.files) + " files were read; " +
               std::to_string(result.unreadableFiles) + " of them cannot be.");
    for (const std::string& file : result.unreadable) {
        _log.write("Cannot be read: " + file);
    }
}

} // namespace ferrobank::drive
