#include "mounting/MountHelper.h"

#include "mounting/OldFstabLines.h"
#include "platform/Files.h"

#include <unistd.h>

namespace ferrobank::drive {

namespace {

bool isInstalled()
{
    return ::access(kMountHelper, X_OK) == 0;
}

} // namespace

std::filesystem::path helperMountPoint(uid_t user)
{
    return std::filesystem::path(kMounts) / std::to_string(user) / "Ferrobank";
}

bool mayUseMountHelper(const Paths& paths)
{
    if (!isInstalled()) {
        return false;
    }
    const uid_t user = ::geteuid();
    const std::filesystem::path approval = std::filesystem::path(kApprovals) / std::to_string(user);
    if (::access(approval.c_str(), F_OK) == 0) {
        return true;
    }
    for (const OldFstabLine& line : oldFstabLines(readSmallFile(kFstab).value_or(std::string()))) {
        if (line.user == user && line.image == paths.image) {
            return true;
        }
    }
    return false;
}

std::string mountingAdvice()
{
    if (isInstalled()) {
        return std::string("run: pkexec ") + kMountHelper + " allow";
    }
    return "install the Ferrobank package, with which an administrator can allow it.";
}

} // namespace ferrobank::drive
