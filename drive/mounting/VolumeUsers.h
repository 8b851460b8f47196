#pragma once

#include "mounting/Volume.h"

#include <string>
#include <vector>

namespace ferrobank::drive {

/// A process that keeps the drive from being unmounted.
struct VolumeUser {
    int process = 0;
    std::string name;
};

/// The processes that work in the volume, run from it or have its files open or mapped, from /proc; only
/// those that this user may look into are found. Does not count this process.
[[nodiscard]] std::vector<VolumeUser> usersOf(const std::filesystem::path& mountPoint);

/// "The drive is in use by code (4242), bash (991). Close them and try again."
[[nodiscard]] std::string busySentence(const std::vector<VolumeUser>& users);

} // namespace ferrobank::drive
