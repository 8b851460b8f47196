#include "mounting/MountHelper.h"

#include "mounting/OldFstabLines.h"
#include "platform/Files.h"

#include <unistd.h>

#include <algorithm>

namespace ferrobank::drive {

namespace {

bool isInstalled()
{
    return ::access(kMountHelper, X_OK) == 0;
}

bool isApproved()
{
    const std::filesystem::path approval = std::filesystem::path(kApprovals) / std::to_string(::geteuid());
    return ::access(approval.c_str(), F_OK) == 0;
}

std::vector<OldFstabLine> oldLines()
{
    return oldFstabLines(readSmallFile(kFstab).value_or(std::string()));
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
    const std::vector<OldFstabLine> lines = oldLines();
    const auto isApproval = [&](const OldFstabLine& line) {
        return line.user == ::geteuid() && line.image == paths.image;
    };
    return isApproved() || std::any_of(lines.begin(), lines.end(), isApproval);
}

bool hasSomethingToForget(const Paths& paths)
{
    if (!isInstalled()) {
        return false;
    }
    const std::vector<OldFstabLine> lines = oldLines();
    const auto isOwn = [&](const OldFstabLine& line) {
        return line.user == ::geteuid() || line.image == paths.image;
    };
    return isApproved() || std::any_of(lines.begin(), lines.end(), isOwn);
}

std::string mountingAdvice()
{
    if (isInstalled()) {
        return std::string("run: pkexec ") + kMountHelper + " allow";
    }
    return "install the Ferrobank package, with which an administrator can allow it.";
}

} // namespace ferrobank::drive
