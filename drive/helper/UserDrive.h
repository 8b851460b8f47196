#pragma once

#include "helper/Places.h"
#include "helper/StoreOfUser.h"
#include "helper/User.h"
#include "mounting/LoopSetup.h"

#include <string>

namespace ferrobank::drive {

/// Mounting and unmounting of one user's drive by root. What is mounted comes from the descriptor of the
/// user's image, and goes to a folder that only root can change, so that no path of the user's is ever
/// mounted or mounted on.
///
/// A mount is made apart from the system's folders first (fsmount(2)), looked at, and only then put in its
/// place. A kill at any moment leaves the drive mounted or nothing at all: loop device and unplaced mount go
/// with the process.
///
/// One object in one process that holds the user's lock. All throw Failure; codes: "busy", "device-busy",
/// "no-btrfs".
class UserDrive {
public:
    UserDrive(const Places& places, User user);

    enum class Access { ReadWrite, ReadOnly };

    /// Mounts with `nosuid` and `nodev`. What is mounted already stays. A read-only mount writes nothing to
    /// the image, and nobody can through it.
    void mount(Access access) const;
    /// Makes the `files` subvolume of a new image, with the user's own rights.
    void prepare() const;
    /// Unmounts; nothing mounted is fine. A drive that a former version mounted on `~/Ferrobank` is found
    /// too.
    void unmount() const;

private:
    /// The loop device to mount: the one that has the image, or a new one. `keepAlive` may be empty for the
    /// former.
    [[nodiscard]] FreshLoop attach(const StoreOfUser& store) const;
    [[nodiscard]] bool unmountOwn() const;
    void unmountAtHome() const;
    void removeMountPoint() const;

    const Places& _places;
    User _user;
};

} // namespace ferrobank::drive
