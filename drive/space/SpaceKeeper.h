#pragma once

#include "platform/Log.h"
#include "space/GuardFile.h"
#include "space/SpacePolicy.h"
#include "state/State.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <thread>

namespace ferrobank::drive {

/// The thread that keeps the drive's free space below the host's while the drive is mounted, and the written
/// reserve beside the image, which pays for what is written between two looks. Its errors are logged, each
/// once in a row; it goes on trying.
class SpaceKeeper {
public:
    /// Called on the keeper's thread after every look.
    using Report = std::function<void(const SpaceState&)>;

    SpaceKeeper(std::filesystem::path mountPoint, const std::string& uuid, std::filesystem::path reserve,
                Log log, Report report);
    SpaceKeeper(const SpaceKeeper&) = delete;
    SpaceKeeper& operator=(const SpaceKeeper&) = delete;
    /// Waits for the step at work: a fraction of a second, or what the disk needs to write out a commit.
    ~SpaceKeeper();

private:
    void run(const std::stop_token& stop);
    int look(const std::stop_token& stop);
    /// The figures when the guard is off its target and the drive can be changed.
    [[nodiscard]] std::optional<SpaceFigures> figuresToCorrect() const;
    void report(const SpaceFigures& figures) const;

    std::filesystem::path _mountPoint;
    GuardFile _guard;
    std::filesystem::path _reserve;
    Log _log;
    Report _report;
    std::string _lastError;
    std::jthread _thread;
};

/// What the host has now, for the policy; `driveFree` and `guard` stay 0.
[[nodiscard]] SpaceFigures hostFigures(const std::filesystem::path& store);

} // namespace ferrobank::drive
