#include "state/ServerProbe.h"

#include "platform/FileLock.h"

namespace ferrobank::drive {

ServerProbe ServerProbe::probe(const Paths& paths)
{
    ServerProbe probe;
    probe.runtime = paths.runtime;
    probe.running = FileLock::isHeld(paths.storeLock);
    if (!probe.running) {
        return probe;
    }
    const std::optional<std::string> runtime = readSmallFile(paths.storeLock);
    if (runtime && runtime->starts_with('/')) {
        probe.runtime = *runtime;
    }
    if (const std::optional<std::string> text = readSmallFile(probe.runtime / "state.json")) {
        probe.state = State::fromJson(*text);
    }
    return probe;
}

} // namespace ferrobank::drive
