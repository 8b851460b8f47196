#include "commands/ProgressBar.h"

#include "figures/DisplayText.h"

#include <algorithm>
#include <cstdio>

namespace ferrobank::drive {

namespace {

constexpr std::uint64_t kCells = 30;

} // namespace

std::string progressLine(const std::string& label, std::uint64_t done, std::uint64_t total)
{
    const std::uint64_t reached = std::min(done, total);
    const double share = total == 0 ? 1.0 : static_cast<double>(reached) / static_cast<double>(total);
    const auto filled = static_cast<std::size_t>(share * static_cast<double>(kCells));
    char start[64];
    std::snprintf(start, sizeof start, "%-10s [", label.c_str());
    char end[32];
    std::snprintf(end, sizeof end, "] %3d %%  ", static_cast<int>(share * 100));
    return start + std::string(filled, '#') + std::string(kCells - filled, '-') + end +
           displayBytes(reached) + " of " + displayBytes(total);
}

} // namespace ferrobank::drive
