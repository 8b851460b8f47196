#include "serving/Workers.h"

namespace ferrobank::drive {

namespace {

HousekeepingMemory memoryOf(const State& state)
{
    HousekeepingMemory memory;
    if (state.volumeUsed) {
        memory.walkedGeneration = state.walkGeneration;
    }
    memory.lastSharing = state.sharing.last;
    memory.lastReading = state.integrity.lastReading;
    memory.hadUnreadable = state.integrity.unreadableFiles > 0;
    memory.readingDue = state.integrity.readingDue != ReadingReason::None;
    memory.bytes = state.volumeUsed.value_or(0);
    memory.held = state.sharing.paused;
    return memory;
}

} // namespace

Workers::Workers(const Paths& paths, const Log& log, const Volume& volume, const State& state,
                 Mailbox& mailbox)
    : _space(volume.mountPoint, state.uuid, paths.reserve, log,
             [&mailbox](const SpaceState& space) {
                 mailbox.post([space](State& changed) { changed.space = space; });
             }),
      _housekeeping(paths, log, volume.mountPoint, state.uuid, memoryOf(state), HousekeepingPace::usual(),
                    mailbox)
{}

} // namespace ferrobank::drive
