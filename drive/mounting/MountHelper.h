#pragma once

#include "platform/Paths.h"

#include <sys/types.h>

#include <filesystem>
#include <string>

namespace ferrobank::drive {

/// What the drive tool and the mount helper, which is root's, have to agree on. The helper is started through
/// pkexec as `ferrobank-mount-helper drive mount|mount-read-only|prepare|unmount|forget`, for which polkit
/// does not ask, or as `ferrobank-mount-helper allow`, for which it asks an administrator.

/// Where the package installs it; polkit knows it by this path.
inline constexpr const char* kMountHelper = FERROBANK_MOUNT_HELPER;
/// One file for each user whom an administrator allowed to mount, readable by everybody.
inline constexpr const char* kApprovals = "/var/lib/ferrobank/mounting";
/// The mounts lie below, in folders that only root may change; gone with every start of the system.
inline constexpr const char* kMounts = "/run/ferrobank";
inline constexpr const char* kFstab = "/etc/fstab";

/// How the helper ends. 126 and 127 belong to pkexec.
enum HelperExit : int {
    HelperDone = 0,
    HelperRefused = 1,
    HelperMisused = 2,
    HelperBusy = 3,
    HelperNotAllowed = 4,
    HelperDeviceBusy = 5,
    HelperNoBtrfs = 6,
};

/// `/run/ferrobank/UID/Ferrobank`.
[[nodiscard]] std::filesystem::path helperMountPoint(uid_t user);

/// Whether an administrator has allowed this user's mounts, now or by a line in fstab of former versions,
/// which the helper turns into an approval.
[[nodiscard]] bool mayUseMountHelper(const Paths& paths);

/// Whether there is anything of this user's that the helper would have to take back: an approval, or a line
/// of former versions, whole or not.
[[nodiscard]] bool hasSomethingToForget(const Paths& paths);

/// How somebody who may not mount gets to, after an "or": what an administrator can do, with the full path of
/// the helper where it is installed.
[[nodiscard]] std::string mountingAdvice();

} // namespace ferrobank::drive
