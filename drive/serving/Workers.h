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
    Workers(const Paths& paths, const Log& log, const Volume& volume, const State& state, Mailbox& mailbox);

    void setSharing(Housekeeping::Sharing sharing) { _housekeeping.setSharing(sharing); }

    void holdSharing(Housekeeping::Held held) { _housekeeping.holdSharing(held); }

    void shareNow() { _housekeeping.shareNow(); }

    void readSoon() { _housekeeping.readSoon(); }

    void allRead(std::uint64_t unreadableFiles) { _housekeeping.allRead(unreadableFiles); }

private:
    SpaceKeeper _space;
    Housekeeping _housekeeping;
};

} // namespace ferrobank::drive
