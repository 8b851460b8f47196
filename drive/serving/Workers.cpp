#include "serving/Workers.h"

#include "serving/DescriptorStore.h"

#include <utility>

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

HousekeepingPace paceWith(const SpaceKeeper& space)
{
    HousekeepingPace pace = HousekeepingPace::usual();
    pace.guardBytes = [&space] { return space.guardBytes(); };
    return pace;
}

} // namespace

Workers::Workers(const Paths& paths, const Log& log, const Volume& volume, const State& state,
                 Mailbox& mailbox, FileDescriptor guard)
    : _space(volume.mountPoint, state.uuid, paths.reserve, log,
             {.looked =
                  [&mailbox](const SpaceState& space) {
                      mailbox.post([space](State& changed) { changed.space = space; });
                  },
              .guardMade = keepGuardOverCrash},
             std::move(guard)),
      _housekeeping(paths, log, volume.mountPoint, state.uuid, memoryOf(state), paceWith(_space), mailbox)
{}

Workers::~Workers()
{
    if (!_guardIsTaken) {
        // Its thread first: a guard that it made after this would be kept, and the drive could not be
        // unmounted.
        const FileDescriptor guard = _space.takeGuard();
        forgetKeptGuard();
    }
}

FileDescriptor Workers::takeGuard()
{
    _guardIsTaken = true;
    return _space.takeGuard();
}

} // namespace ferrobank::drive
