#pragma once

#include "mounting/Attachment.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "serving/Locks.h"

#include <optional>

namespace ferrobank::drive {

/// The drive while nobody can write to it: unmounted, the serving process ended, and its place taken by this
/// one, so that none can come back. One thread. Unless it is told that the drive is to stay away, its end
/// brings everything back as it was, also after a failure.
class StoppedDrive {
public:
    /// Throws Failure, "busy" with the names of the programs that use the drive; it is then as it was.
    StoppedDrive(const Paths& paths, const Log& log);
    StoppedDrive(const StoppedDrive&) = delete;
    StoppedDrive& operator=(const StoppedDrive&) = delete;
    ~StoppedDrive();

    /// Mounts it where it can be read and by nobody written. Throws Failure.
    Volume mountReadOnly();
    /// Takes that away again. Throws Failure, "busy" when a program has started to read there.
    void unmount();

    /// From now on the drive does not come back.
    void stayAway() { _comesBack = false; }

    [[nodiscard]] const HomeEntry& home() const { return _attachment->home(); }

private:
    void stop();
    void bringBack() noexcept;

    const Paths& _paths;
    const Log& _log;
    bool _comesBack = false;
    std::optional<Locks> _locks;
    std::optional<Attachment> _attachment;
};

} // namespace ferrobank::drive
