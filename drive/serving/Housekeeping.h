#pragma once

#include "figures/Pacing.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "serving/Mailbox.h"
#include "sharing/ScanConditions.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>

namespace ferrobank::drive {

/// What housekeeping takes from outside, so that a test need not wait for minutes and days.
struct HousekeepingPace {
    std::chrono::milliseconds look{5000};
    /// Seconds since the epoch; people and time servers set it, also backwards.
    std::function<std::int64_t()> wallClock;
    std::function<std::chrono::steady_clock::time_point()> monotonicClock;
    std::function<ScanConditions()> conditions;
    std::function<bool(const std::optional<LastWalk>&, std::uint64_t)> walkAllowed;
    /// What the space guard takes of the drive, once the drive has counted it.
    std::function<std::uint64_t()> guardBytes = [] { return std::uint64_t{0}; };
    /// Files changed less than this ago are left alone by the scanner.
    std::int64_t quietSeconds = 60;

    [[nodiscard]] static HousekeepingPace usual();
};

/// What earlier runs left: figures that need not be found again while the drive is unchanged.
struct HousekeepingMemory {
    std::optional<std::uint64_t> walkedGeneration;
    std::int64_t lastSharing = 0;
    std::int64_t lastReading = 0;
    bool hadUnreadable = false;
};

/// The thread that looks after the mounted drive at idle priority: sums up the files when something changed,
/// shares repeated data when the drive is quiet and the computer idle, and reads everything once a week to
/// have its checksums verified (daily while some file is unreadable). It has files of the drive open while it
/// works. Results go to the mailbox; errors too, nothing is thrown.
class Housekeeping {
public:
    Housekeeping(const Paths& paths, Log log, std::filesystem::path mountPoint, std::string uuid,
                 HousekeepingMemory memory, HousekeepingPace pace, Mailbox& mailbox);
    Housekeeping(const Housekeeping&) = delete;
    Housekeeping& operator=(const Housekeeping&) = delete;
    /// Ends within a fraction of a second.
    ~Housekeeping();

    enum class Sharing { Allowed, Paused };

    /// From any thread; a pass that runs is ended.
    void setSharing(Sharing sharing);

private:
    void run(const std::stop_token& stop);
    void lookOnce(const std::stop_token& stop);
    void walk(std::uint64_t generation, const std::stop_token& stop);
    void share(std::uint64_t generation);
    void read();
    [[nodiscard]] bool mayWork(std::int64_t lastPass) const;
    [[nodiscard]] std::stop_token passToken();
    void postUsage(std::uint64_t bytes, std::optional<std::uint64_t> inUse, std::uint64_t generation);
    [[nodiscard]] std::optional<std::uint64_t> generation() const;
    [[nodiscard]] std::optional<std::uint64_t> bytesTaken() const;

    std::filesystem::path _index;
    Log _log;
    std::filesystem::path _root;
    std::string _uuid;
    HousekeepingMemory _memory;
    HousekeepingPace _pace;
    Mailbox& _mailbox;

    std::optional<std::uint64_t> _seenGeneration;
    std::chrono::steady_clock::time_point _changed;
    std::optional<std::uint64_t> _sharedGeneration;
    LastWalk _lastWalk;
    std::chrono::steady_clock::time_point _walkEnd;

    std::mutex _mutex;
    std::condition_variable_any _wake;
    bool _paused = false;
    bool _ending = false;
    std::stop_source _pass;
    std::jthread _thread;
};

} // namespace ferrobank::drive
