#include "mounting/Volume.h"

namespace ferrobank::drive {

namespace {

bool showsFiles(const MountEntry& mount)
{
    return mount.fileSystem == "btrfs" && mount.root == std::string("/") + kFilesSubvolume;
}

} // namespace

std::optional<Volume> findVolume(const std::vector<LoopDevice>& loops, const std::vector<MountEntry>& mounts)
{
    for (const LoopDevice& loop : loops) {
        for (const MountEntry& mount : mounts) {
            if (mount.source == loop.device && showsFiles(mount)) {
                return Volume{
                    .loop = loop.device, .mountPoint = mount.mountPoint, .readOnly = mount.readOnly};
            }
        }
    }
    return std::nullopt;
}

std::vector<MountEntry> otherMounts(const std::string& loop, const std::vector<MountEntry>& mounts)
{
    std::vector<MountEntry> found;
    for (const MountEntry& mount : mounts) {
        if (mount.source == loop && !showsFiles(mount)) {
            found.push_back(mount);
        }
    }
    return found;
}

std::optional<Volume> findVolume(const std::filesystem::path& image, Recognise how)
{
    const std::vector<LoopDevice> loops = loopsOf(image, how);
    if (loops.empty()) {
        return std::nullopt;
    }
    return findVolume(loops, readMountTable());
}

} // namespace ferrobank::drive
