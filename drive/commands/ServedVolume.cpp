#include "commands/ServedVolume.h"

namespace ferrobank::drive {

std::optional<Volume> findServedVolume(const Paths& paths, const ServerProbe& server)
{
    std::vector<LoopDevice> loops = loopsOf(paths.image, Recognise::ByName);
    if (loops.empty() && server.state && !server.state->loop.empty()) {
        loops.push_back({.device = server.state->loop});
    }
    return loops.empty() ? std::nullopt : findVolume(loops, readMountTable());
}

} // namespace ferrobank::drive
