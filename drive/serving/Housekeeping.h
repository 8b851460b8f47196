#pragma once

#include "figures/Pacing.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "serving/Mailbox.h"
#include "sharing/ReadingPass.h"
#include "sharing/ScanConditions.h"
#include "sharing/ScanContext.h"

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
    std::int64_t quietSeconds = 30;

    [[nodiscard]] static HousekeepingPace usual();
};

/// What earlier runs left: figures that need not be found again while the drive is unchanged.
struct HousekeepingMemory {
    std::optional<std::uint64_t> walkedGeneration;
    std::int64_t lastSharing = 0;
    std::int64_t lastReading = 0;
    bool hadUnreadable = false;
    /// Every file has to be read once, as soon as can be.
    bool readingDue = false;
    /// What the files take, for the progress of a reading.
    std::uint64_t bytes = 0;
    /// Somebody has paused sharing.
    bool held = false;
};

/// The thread that looks after the mounted drive at idle priority: sums up the files when something changed,
/// shares repeated data when `scanWait` lets it, and reads everything once a week to have its checksums
/// verified (daily while some file is unreadable, at once when it is due after damage). A pass that is ended
/// early continues another time. It has files of the drive open while it works. Results go to the mailbox;
/// errors too, nothing is thrown.
class Housekeeping {
public:
    Housekeeping(const Paths& paths, Log log, std::filesystem::path mountPoint, std::string uuid,
                 HousekeepingMemory memory, HousekeepingPace pace, Mailbox& mailbox);
    Housekeeping(const Housekeeping&) = delete;
    Housekeeping& operator=(const Housekeeping&) = delete;
    /// Ends within a fraction of a second.
    ~Housekeeping();

    enum class Sharing { Allowed, Paused };
    enum class Held { No, Yes };

    // All from any thread.

    /// Around an export; any pass that runs is ended.
    void setSharing(Sharing sharing);
    /// As a person wishes; a sharing pass that runs is ended.
    void holdSharing(Held held);
    /// Begins a pass that waits for nothing and does not pause, also while sharing is held.
    void shareNow();
    /// Reads every file as soon as can be.
    void readSoon();
    /// Somebody else has read every file; what was due is done.
    void allRead(std::uint64_t unreadableFiles);

private:
    void run(const std::stop_token& stop);
    void clearUp(const std::stop_token& stop) const;
    void lookOnce(const std::stop_token& stop);
    void walk(std::uint64_t generation, const std::stop_token& stop);
    enum class Work { None, Sharing, SharingNow, Reading };
    enum class Reading { Weekly, Due };

    void lookAfterReading();
    void lookAfterSharing(std::uint64_t generation);
    void share(std::uint64_t generation, Work manner);
    void read(Reading reading);
    void tell(const SharingResult& result, Work manner);
    void postWait(SharingWait wait);
    void postProgress(Work work, std::uint64_t done, std::uint64_t total);
    [[nodiscard]] std::optional<SharingWait> sharingWaitsFor(std::uint64_t generation);
    [[nodiscard]] ScanConditions conditions(Urgency urgency) const;
    [[nodiscard]] std::optional<std::stop_token> begin(Work work);
    void end();
    void postUsage(std::uint64_t bytes, std::optional<std::uint64_t> inUse, std::uint64_t generation);
    [[nodiscard]] std::optional<std::uint64_t> generation() const;
    [[nodiscard]] std::optional<std::uint64_t> bytesTaken() const;

    Paths _paths;
    std::filesystem::path _index;
    std::filesystem::path _unreadable;
    Log _log;
    std::filesystem::path _root;
    std::string _uuid;
    HousekeepingMemory _memory;
    HousekeepingPace _pace;
    Mailbox& _mailbox;

    std::optional<std::uint64_t> _seenGeneration;
    std::chrono::steady_clock::time_point _changed;
    /// The state of the volume before the last pass that found nothing more to share.
    std::optional<std::uint64_t> _sharedGeneration;
    /// Since when there is something that no pass has come to.
    std::optional<std::chrono::steady_clock::time_point> _waitingSince;
    std::optional<SharingWait> _postedWait;
    std::chrono::steady_clock::time_point _progressPosted;
    LastWalk _lastWalk;
    std::chrono::steady_clock::time_point _walkEnd;

    std::mutex _mutex;
    std::condition_variable_any _wake;
    bool _paused = false;
    bool _held = false;
    bool _shareNow = false;
    bool _readingDue = false;
    bool _ending = false;
    Work _work = Work::None;
    std::stop_source _pass;
    std::jthread _thread;
};

} // namespace ferrobank::drive
