#pragma once

#include "platform/Log.h"
#include "space/GuardFile.h"
#include "space/SpacePolicy.h"
#include "state/State.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>

namespace ferrobank::drive {

/// What the keeper tells others, on its own thread.
struct SpaceReports {
    /// After every look.
    std::function<void(const SpaceState&)> looked;
    /// A new guard file was made; it is open until the next call of anything.
    std::function<void(int descriptor)> guardMade = [](int) {};
};

/// The thread that keeps the drive's free space below the host's while the drive is mounted, and the written
/// reserve beside the image, which pays for what is written between two looks. Its errors are
/// logged and it goes on trying: the guard at every look, the reserve ever more rarely, since each attempt
/// writes all of it.
class SpaceKeeper {
public:
    /// `guard` is the guard file of an earlier keeper, if that was handed over.
    SpaceKeeper(std::filesystem::path mountPoint, const std::string& uuid, std::filesystem::path reserve,
                Log log, SpaceReports reports, FileDescriptor guard = {});
    SpaceKeeper(const SpaceKeeper&) = delete;
    SpaceKeeper& operator=(const SpaceKeeper&) = delete;
    /// Waits for the step at work: a fraction of a second, or what the disk needs to write out a commit. The
    /// guard file goes, and with it all that it held back.
    ~SpaceKeeper();

    /// What the guard takes, never a size between two: waits for the end of a correction, until the drive's
    /// own counters have it too. From any thread.
    [[nodiscard]] std::uint64_t guardBytes() const;

    /// Ends the thread and gives the guard file away, to the next keeper.
    [[nodiscard]] FileDescriptor takeGuard();

private:
    void run(const std::stop_token& stop);
    int look(const std::stop_token& stop);
    void correctGuard(const std::stop_token& stop);
    void lookAfterReserve(const SpaceFigures& figures, const std::stop_token& stop);
    /// The figures when the guard is off its target and the drive can be changed.
    [[nodiscard]] std::optional<SpaceFigures> figuresToCorrect() const;
    void report(const SpaceFigures& figures) const;

    std::filesystem::path _mountPoint;
    mutable std::mutex _guardMutex; ///< held while the guard changes and until the drive has counted that
    GuardFile _guard;
    std::filesystem::path _reserve;
    Log _log;
    SpaceReports _reports;
    RepeatedLog _trouble;
    int _reserveFailures = 0;
    std::chrono::steady_clock::time_point _reserveAgain;
    std::jthread _thread;
};

/// What the host has now, for the policy; `driveFree` and `guard` stay 0.
[[nodiscard]] SpaceFigures hostFigures(const std::filesystem::path& store);

} // namespace ferrobank::drive
