#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace ferrobank::drive {

/// How far an export is. `done` grows to `total` while copying and once more while verifying.
struct ExportProgress {
    enum class Phase { Copying, Verifying };

    Phase phase = Phase::Copying;
    std::uint64_t done = 0;
    std::uint64_t total = 0;
};

using ProgressReceiver = std::function<void(const ExportProgress&)>;

/// Passes progress on once a second, and at the start of each phase.
class ProgressMeter {
public:
    ProgressMeter(ProgressReceiver receiver, std::uint64_t total);

    void start(ExportProgress::Phase phase);
    void add(std::uint64_t bytes);

    /// Reports the end of the phase, whatever the time.
    void finish();

private:
    void report();

    ProgressReceiver _receiver;
    ExportProgress _progress;
    std::chrono::steady_clock::time_point _reported;
};

} // namespace ferrobank::drive
