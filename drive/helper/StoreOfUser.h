#pragma once

#include "platform/FileDescriptor.h"
#include "platform/Paths.h"

#include <sys/types.h>

namespace ferrobank::drive {

/// A user's store as root may touch it: each folder from the home on was opened without following a link and
/// belongs to the user, and so does the image. The descriptors, not the paths, are what to work on.
struct StoreOfUser {
    Paths paths;
    uid_t user = 0;
    gid_t group = 0;
    FileDescriptor folder;
    FileDescriptor image;

    /// Throws Failure with what is wrong.
    [[nodiscard]] static StoreOfUser open(uid_t user);
    /// The same with a given home folder instead of the password data base's.
    [[nodiscard]] static StoreOfUser open(uid_t user, gid_t group, const std::filesystem::path& home);
};

/// Paths of a user by number; throws Failure when there is no such user or the home is unusable in fstab.
[[nodiscard]] Paths pathsOfUser(uid_t user);

/// Makes the `files` subvolume in the user's image unless it is there, in mounts of its own that nobody else
/// sees, and removes the mark that it is missing. Root only.
void prepareStore(const StoreOfUser& store);

} // namespace ferrobank::drive
