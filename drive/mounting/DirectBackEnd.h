#pragma once

#include "mounting/BackEnd.h"
#include "platform/FileDescriptor.h"

#include <filesystem>
#include <string>

namespace ferrobank::drive {

/// For root: the loop device and mount(2) by our own hand, with direct I/O below the loop, which halves the
/// time of big transfers and which only root may ask for. Containers and tests use it.
class DirectBackEnd : public BackEnd {
public:
    /// `scratch` is a private folder in which the top level of a new image is mounted for a moment; the drive
    /// is mounted read-only beside it.
    DirectBackEnd(std::filesystem::path image, std::filesystem::path mountPoint,
                  std::filesystem::path scratch);

    [[nodiscard]] std::string_view name() const override { return "direct"; }

    [[nodiscard]] bool mountsAtHome() const override { return true; }

    void prepare(const std::optional<LoopDevice>& existing, Interaction interaction) override;
    Volume attach(const std::optional<LoopDevice>& existing, Interaction interaction) override;
    Volume attachReadOnly(Interaction interaction) override;
    void detach(const Volume& volume) override;

private:
    std::filesystem::path _image;
    std::filesystem::path _mountPoint;
    std::filesystem::path _scratch;
};

/// Whether the kernel lists Btrfs; asked after a mount failed, because mounting is what loads the module.
[[nodiscard]] bool kernelHasBtrfs(const std::filesystem::path& list = "/proc/filesystems");

/// Unmounts without force. Throws Failure, "busy" with the names of the processes when it is in use.
void unmountOrName(const std::filesystem::path& mountPoint);

/// Waits until the loop device no longer uses any file, at most five seconds; false when it still does. The
/// device lets go by itself when it was set to at its last unmount, and is told to otherwise.
bool releaseLoop(const std::string& device);

/// The same for a user who may only wait for it.
bool awaitLoopGone(const std::string& device);

/// Mounts a loop device for the time of a preparation and makes the `files` subvolume for `owner`.
void prepareOnLoop(const std::string& device, const std::filesystem::path& scratch, uid_t owner, gid_t group);

/// A fresh loop device on the image that lets go by itself; `keepAlive` holds it until it is mounted.
struct FreshLoop {
    std::string device;
    FileDescriptor keepAlive;
};

[[nodiscard]] FreshLoop makeLoop(const std::filesystem::path& image);
/// The same on an open file, for a caller who must be sure which one it is.
[[nodiscard]] FreshLoop makeLoop(const FileDescriptor& image);

} // namespace ferrobank::drive
