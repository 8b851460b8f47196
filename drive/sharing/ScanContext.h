#pragma once

#include "figures/Usage.h"
#include "sharing/SharedRange.h"
#include "sharing/Throttle.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace ferrobank::drive {

enum class ScanStep { Hash, Share, ReadBlocks };

/// How a pass goes about its work. The defaults are those of the running drive.
struct ScanSettings {
    /// Root of the mounted drive.
    std::filesystem::path root;
    /// Folder on the computer's own disk for the two index files; made if missing.
    std::filesystem::path indexFolder;
    /// What is smaller always lies among the names, in the file system's metadata (`kLargestInline`).
    std::uint64_t smallestFile = kLargestInline + 1;
    /// From this size on, files are also searched for equal blocks.
    std::uint64_t blockFile = std::uint64_t{1} << 20U;
    std::int64_t quietSeconds = 30;
    /// Share of one core, averaged.
    double processorShare = 0.25;
    /// With more files the pass takes them in several rounds by size, each with a walk of its own.
    std::size_t mostFiles = 300'000;
    std::size_t windowMemory = std::size_t{32} << 20U;
    /// Called on the scanning thread before a file is worked on, with its path below the root. May be empty.
    std::function<void(ScanStep step, const std::string& file)> onStep;
    /// Called on the scanning thread after each step with the bytes of files that are done and of all that
    /// are to be done. `total` is an estimate that may shrink. May be empty.
    std::function<void(std::uint64_t done, std::uint64_t total)> onProgress;
};

/// What a pass did. `error` is empty unless the pass had to end early; it is a sentence for the user.
struct SharingResult {
    Usage usage;
    std::uint64_t filesLookedAt = 0;
    /// Files that were passed over because they had been changed a moment ago.
    std::uint64_t filesAtWork = 0;
    std::uint64_t filesHashed = 0;
    std::uint64_t filesShared = 0;
    /// Bytes that the kernel let two files share in this pass, whole files and blocks.
    std::uint64_t bytesShared = 0;
    /// Files that the kernel does not share (swap files, files without checksums).
    std::uint64_t filesRefused = 0;
    /// Paths of files that could not be read, as display names; 100 at most.
    std::vector<std::string> unreadable;
    Seconds duration{};
    Seconds processor{};
    bool cancelled = false;
    std::string error;

    [[nodiscard]] bool complete() const { return !cancelled && error.empty(); }

    void addUnreadable(const std::string& path);
};

/// What the stages of one pass share. Lives as long as the pass.
struct ScanContext {
    const ScanSettings& settings;
    int root;
    std::string uuid;
    Throttle& throttle;
    SharingResult& result;
    std::uint64_t& done;
    std::uint64_t& total;

    void advance(std::uint64_t bytes) const
    {
        done += bytes;
        if (settings.onProgress) {
            settings.onProgress(done, std::max(done, total));
        }
    }

    void step(ScanStep step, const std::string& file) const
    {
        if (settings.onStep) {
            settings.onStep(step, file);
        }
    }
};

/// Whether a stage came to its end, or the pass is over (`result` says why).
enum class StageEnd { Done, PassOver };

} // namespace ferrobank::drive
