#include "space/SpaceKeeper.h"

#include "platform/Failure.h"
#include "platform/FileDescriptor.h"
#include "platform/Files.h"
#include "platform/Guarded.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <utility>
#include <vector>

namespace ferrobank::drive {

namespace {

/// The room that the file system itself takes for a larger guard shows only afterwards.
constexpr int kTurns = 3;

std::uint64_t numberIn(const char* file)
{
    const std::string text = readSmallFile(file).value_or("0");
    return std::strtoull(text.c_str(), nullptr, 10);
}

std::uint64_t availableMemory()
{
    const std::string text = readSmallFile("/proc/meminfo").value_or(std::string());
    const std::size_t at = text.find("MemAvailable:");
    if (at == std::string::npos) {
        return 0;
    }
    return std::strtoull(text.c_str() + at + sizeof "MemAvailable:" - 1, nullptr, 10) * 1024;
}

std::uint64_t dirtyLimit()
{
    const std::uint64_t bytes = numberIn("/proc/sys/vm/dirty_bytes");
    return bytes > 0 ? bytes : availableMemory() / 100 * numberIn("/proc/sys/vm/dirty_ratio");
}

/// Whether all was written; not when asked to stop. Not zeros: a host that compresses would store next to
/// nothing.
bool writeNoise(int file, std::uint64_t bytes, const std::stop_token& stop)
{
    std::vector<std::uint64_t> piece(128 * 1024);
    std::uint64_t number = 0x9E3779B97F4A7C15ULL;
    for (std::uint64_t done = 0; done < bytes;) {
        if (stop.stop_requested()) {
            return false;
        }
        for (std::uint64_t& word : piece) {
            number ^= number << 13;
            number ^= number >> 7;
            number ^= number << 17;
            word = number;
        }
        const std::size_t part = std::min<std::size_t>(piece.size() * sizeof piece[0], bytes - done);
        const ssize_t put = ::write(file, piece.data(), part);
        if (put <= 0) {
            throw systemFailure("Cannot write the space reserve", errno);
        }
        done += static_cast<std::uint64_t>(put);
    }
    if (::fsync(file) != 0) {
        throw systemFailure("Cannot write the space reserve", errno);
    }
    return true;
}

/// Really written, not only allocated: a file system that copies on write needs new room even for allocated
/// blocks. What cannot be finished goes again.
void makeReserve(const std::filesystem::path& path, std::uint64_t bytes, const std::stop_token& stop)
{
    const std::filesystem::path fresh = path.string() + ".new";
    const FileDescriptor file(
        ::open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) {
        throw systemFailure("Cannot make the space reserve", errno);
    }
    try {
        if (!writeNoise(file.get(), bytes, stop)) {
            ::unlink(fresh.c_str());
            return;
        }
        if (::rename(fresh.c_str(), path.c_str()) != 0) {
            throw systemFailure("Cannot write the space reserve", errno);
        }
    } catch (...) {
        ::unlink(fresh.c_str());
        throw;
    }
}

} // namespace

SpaceFigures hostFigures(const std::filesystem::path& store)
{
    SpaceFigures figures;
    struct statvfs host{};
    if (::statvfs(store.c_str(), &host) != 0) {
        throw systemFailure("Cannot look at " + store.string(), errno);
    }
    figures.hostTotal = static_cast<std::uint64_t>(host.f_blocks) * host.f_frsize;
    figures.hostFree = static_cast<std::uint64_t>(host.f_bavail) * host.f_frsize;
    figures.dirtyLimit = dirtyLimit();
    return figures;
}

SpaceKeeper::SpaceKeeper(std::filesystem::path mountPoint, const std::string& uuid,
                         std::filesystem::path reserve, Log log, SpaceReports reports, FileDescriptor guard)
    : _mountPoint(std::move(mountPoint)),
      _guard(_mountPoint, uuid, std::move(guard)),
      _reserve(std::move(reserve)),
      _log(std::move(log)),
      _reports(std::move(reports)),
      _trouble(_log),
      _reserveAgain(std::chrono::steady_clock::now()),
      _thread([this](const std::stop_token& stop) { run(stop); })
{}

SpaceKeeper::~SpaceKeeper()
{
    _thread.request_stop();
    if (_thread.joinable()) {
        _thread.join();
    }
}

FileDescriptor SpaceKeeper::takeGuard()
{
    _thread.request_stop();
    if (_thread.joinable()) {
        _thread.join();
    }
    return _guard.take();
}

std::uint64_t SpaceKeeper::guardBytes() const
{
    const std::lock_guard lock(_guardMutex);
    return _guard.size();
}

void SpaceKeeper::run(const std::stop_token& stop)
{
    std::mutex mutex;
    std::condition_variable_any wake;
    while (!stop.stop_requested()) {
        int seconds = 1;
        guarded([&] { seconds = look(stop); }, [this](const std::string& words) { _trouble.write(words); });
        std::unique_lock lock(mutex);
        wake.wait_for(lock, stop, std::chrono::seconds(seconds), [] { return false; });
    }
}

std::optional<SpaceFigures> SpaceKeeper::figuresToCorrect() const
{
    struct statvfs drive{};
    if (::statvfs(_mountPoint.c_str(), &drive) != 0) {
        throw systemFailure("Cannot look at the drive", errno);
    }
    SpaceFigures figures = hostFigures(_reserve.parent_path());
    figures.driveFree = static_cast<std::uint64_t>(drive.f_bavail) * drive.f_frsize;
    figures.guard = _guard.size();
    const bool correctable = (drive.f_flag & ST_RDONLY) == 0 && needsCorrection(figures);
    return correctable ? std::optional(figures) : std::nullopt;
}

void SpaceKeeper::report(const SpaceFigures& figures) const
{
    _reports.looked({.hostFree = figures.hostFree,
                     .reserve = reserveFor(figures),
                     .guard = _guard.size(),
                     .level = levelFor(figures)});
}

void SpaceKeeper::correctGuard(const std::stop_token& stop)
{
    for (int turn = 0; turn < kTurns && !stop.stop_requested() && figuresToCorrect(); ++turn) {
        const std::lock_guard lock(_guardMutex);
        // The drive counts changes late: a guard that has just grown would be taken off its free space twice.
        _guard.settle();
        const std::optional<SpaceFigures> settled = figuresToCorrect();
        if (!settled) {
            return;
        }
        const int before = _guard.descriptor();
        _guard.resize(guardInSteps(*settled), stop);
        _guard.settle();
        if (before < 0 && _guard.descriptor() >= 0) {
            _reports.guardMade(_guard.descriptor());
        }
        report(*settled);
    }
}

void SpaceKeeper::lookAfterReserve(const SpaceFigures& figures, const std::stop_token& stop)
{
    switch (hostReserveAct(figures.hostFree, figures.hostTotal, ::access(_reserve.c_str(), F_OK) == 0)) {
    case HostReserveAct::Keep:
        return;
    case HostReserveAct::Drop:
        removeIfPresent(_reserve);
        _log.write("This computer's disk is nearly full; the space reserve was given up.");
        return;
    case HostReserveAct::Make:
        break;
    }
    const auto now = std::chrono::steady_clock::now();
    if (now < _reserveAgain) {
        return;
    }
    try {
        makeReserve(_reserve, hostReserveBytes(figures.hostTotal), stop);
        _reserveFailures = 0;
    } catch (const Failure&) {
        _reserveAgain = now + std::chrono::seconds(reservePauseSeconds(++_reserveFailures));
        throw;
    }
}

int SpaceKeeper::look(const std::stop_token& stop)
{
    const std::filesystem::path store = _reserve.parent_path();
    const SpaceFigures figures = hostFigures(store);
    report(figures);
    const auto tell = [this](const std::string& words) { _trouble.write(words); };
    // Each whatever becomes of the other, and first what keeps programs from filling the computer's disk.
    guarded([&] { correctGuard(stop); }, tell);
    guarded([&] { lookAfterReserve(figures, stop); }, tell);
    guarded([&] { correctGuard(stop); }, tell); // a new reserve takes room
    return pollSeconds(hostFigures(store));
}

} // namespace ferrobank::drive
