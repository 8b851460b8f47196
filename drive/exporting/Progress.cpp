#include "exporting/Progress.h"

#include <algorithm>
#include <utility>

namespace ferrobank::drive {

ProgressMeter::ProgressMeter(ProgressReceiver receiver, std::uint64_t total) : _receiver(std::move(receiver))
{
    _progress.total = total;
}

void ProgressMeter::start(ExportProgress::Phase phase)
{
    _progress.phase = phase;
    _progress.done = 0;
    report();
}

void ProgressMeter::add(std::uint64_t bytes)
{
    // The total was counted before the copy; files may have grown since.
    _progress.done = std::min(_progress.done + bytes, _progress.total);
    if (std::chrono::steady_clock::now() - _reported >= std::chrono::seconds(1)) {
        report();
    }
}

void ProgressMeter::finish()
{
    _progress.done = _progress.total;
    report();
}

void ProgressMeter::report()
{
    _reported = std::chrono::steady_clock::now();
    if (_receiver) {
        _receiver(_progress);
    }
}

} // namespace ferrobank::drive
