#include "exporting/Snapshot.h"

#include "exporting/Removal.h"
#include "figures/DisplayText.h"
#include "figures/TreeWalk.h"
#include "platform/Failure.h"

#include <fcntl.h>
#include <linux/btrfs.h>
#include <linux/btrfs_tree.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>

namespace ferrobank::drive {

namespace fs = std::filesystem;

namespace {

constexpr const char* kStem = "export-";

FileDescriptor openFolder(const fs::path& folder)
{
    return FileDescriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

/// Collects the places of subvolumes inside the drive.
class VolumeFinder : public TreeVisitor {
public:
    bool enterFolder(const WalkedFolder& folder) override
    {
        const bool root = _levels.empty();
        const std::string path = root ? std::string() : _levels.back().path + folder.name;
        if (!root && folder.volume != _levels.back().volume) {
            places.push_back(path);
        }
        _levels.push_back({root ? path : path + "/", folder.volume});
        return true;
    }

    void leaveFolder() override { _levels.pop_back(); }

    void visit(const WalkedEntry&) override {}

    std::vector<std::string> places;

private:
    struct Level {
        std::string path;
        std::uint64_t volume = 0;
    };

    std::vector<Level> _levels;
};

void makeWritable(int volume)
{
    __u64 flags = 0;
    if (::ioctl(volume, BTRFS_IOC_SUBVOL_GETFLAGS, &flags) == 0 && (flags & BTRFS_SUBVOL_RDONLY) != 0) {
        flags &= ~static_cast<__u64>(BTRFS_SUBVOL_RDONLY);
        ::ioctl(volume, BTRFS_IOC_SUBVOL_SETFLAGS, &flags);
    }
}

bool removeSnapshot(const fs::path& folder, const std::string& name, const std::stop_token& stop = {})
{
    const FileDescriptor parent = openFolder(folder);
    btrfs_ioctl_vol_args arguments{};
    if (!parent || name.size() >= sizeof arguments.name) {
        return false;
    }
    std::copy(name.begin(), name.end(), arguments.name);
    if (::ioctl(parent.get(), BTRFS_IOC_SNAP_DESTROY, &arguments) == 0) {
        return true;
    }
    // Deleting a subvolume is a privilege on most mounts; emptying one's own and removing the folder is not.
    if (const FileDescriptor volume = openFolder(folder / name)) {
        makeWritable(volume.get());
    }
    return removeEntry(parent.get(), name.c_str(), stop);
}

} // namespace

DriveSnapshot::DriveSnapshot(const fs::path& drive, const std::stop_token& stop)
    : _folder(drive / kToolFolder)
{
    if (::mkdir(_folder.c_str(), 0700) != 0 && errno != EEXIST) {
        throw systemFailure("The drive cannot be written", errno);
    }
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    _stem = kStem + std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(now).count()) + "-" +
            std::to_string(::getpid()) + "-";
    VolumeFinder finder;
    walkTree(drive, finder, stop);
    try {
        take(drive, "");
        for (const std::string& place : finder.places) {
            take(drive / place, place);
        }
    } catch (...) {
        for (const Part& part : _parts) {
            removeSnapshot(_folder, part.folder.filename().string());
        }
        throw;
    }
    // The copy of the tool's own folder would only hold on to the space guard's blocks.
    if (const FileDescriptor root = openFolder(_parts.front().folder)) {
        removeEntry(root.get(), kToolFolder);
    }
}

DriveSnapshot::~DriveSnapshot()
{
    for (const Part& part : _parts) {
        removeSnapshot(_folder, part.folder.filename().string());
    }
}

void DriveSnapshot::take(const fs::path& volume, const std::string& place)
{
    const FileDescriptor parent = openFolder(_folder);
    const FileDescriptor source = openFolder(volume);
    const std::string name = _stem + std::to_string(_parts.size());
    btrfs_ioctl_vol_args_v2 arguments{};
    arguments.fd = source.get();
    std::copy(name.begin(), name.end(), arguments.name);
    if (!parent || !source || ::ioctl(parent.get(), BTRFS_IOC_SNAP_CREATE_V2, &arguments) != 0) {
        const int error = errno;
        const std::string what = place.empty() ? "The drive" : "“" + displayName(place) + "”";
        throw systemFailure(what + " cannot be frozen for the copy", error);
    }
    _parts.push_back({place, _folder / name});
}

bool standsForVolume(const struct statx& status)
{
    return status.stx_ino == BTRFS_EMPTY_SUBVOL_DIR_OBJECTID;
}

namespace {

std::vector<std::string> leftoverSnapshots(const fs::path& drive)
{
    std::error_code error;
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(drive / kToolFolder, error)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with(kStem) && entry.is_directory(error)) {
            names.push_back(name);
        }
    }
    return names;
}

} // namespace

bool hasLeftoverSnapshots(const fs::path& drive)
{
    return !leftoverSnapshots(drive).empty();
}

bool removeLeftoverSnapshots(const fs::path& drive, const std::stop_token& stop)
{
    bool all = true;
    for (const std::string& name : leftoverSnapshots(drive)) {
        all = removeSnapshot(drive / kToolFolder, name, stop) && all;
    }
    return all;
}

} // namespace ferrobank::drive
