#pragma once

#include "mounting/Volume.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "serving/Housekeeping.h"
#include "serving/Mailbox.h"
#include "space/SpaceKeeper.h"

namespace ferrobank::drive {

/// The threads that work on the mounted drive: space guard, and housekeeping (figures, sharing, reading).
/// They have files open on it, so they must be gone before it is unmounted: made after a mount, destroyed
/// before an unmount.
class Workers {
public:
    /// `guard` is the space guard's file that earlier workers or an earlier process had open, if any.
    Workers(const Paths& paths, const Log& log, const Volume& volume, const State& state, Mailbox& mailbox,
            FileDescriptor guard);
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    /// Ends the space guard's thread and gives its file away, for the workers that come next; otherwise the
    /// guard goes with this.
    [[nodiscard]] FileDescriptor takeGuard();

    void setSharing(Housekeeping::Sharing sharing) { _housekeeping.setSharing(sharing); }

    void holdSharing(Housekeeping::Held held) { _housekeeping.holdSharing(held); }

    void shareNow() { _housekeeping.shareNow(); }

    void readSoon() { _housekeeping.readSoon(); }

    void allRead(std::uint64_t unreadableFiles) { _housekeeping.allRead(unreadableFiles); }

private:
    bool _guardIsTaken = false;
    SpaceKeeper _space;
    Housekeeping _housekeeping; ///< asks the other, so it comes after and goes first
};

} // namespace ferrobank::drive
