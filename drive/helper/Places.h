#pragma once

#include "mounting/MountHelper.h"

#include <filesystem>

namespace ferrobank::drive {

/// The mount helper's own folders and files; others in tests.
struct Places {
    /// Every folder below this one on the way to the others must be only root's to write.
    std::filesystem::path top = "/";
    std::filesystem::path approvals = kApprovals;
    std::filesystem::path mounts = kMounts;
    std::filesystem::path fstab = kFstab;

    [[nodiscard]] std::filesystem::path lockOf(uid_t user) const
    {
        return mounts / ("lock-" + std::to_string(user));
    }

    [[nodiscard]] std::filesystem::path fstabLock() const { return mounts / "lock-fstab"; }
};

} // namespace ferrobank::drive
