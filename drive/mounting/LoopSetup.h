#pragma once

#include "platform/Failure.h"
#include "platform/FileDescriptor.h"

#include <filesystem>
#include <string>

namespace ferrobank::drive {

/// Loop devices and mounts of the image by root's own hand: for the direct back end and for the mount helper.

/// A fresh loop device on the image that lets go by itself; `keepAlive` holds it until it is mounted.
struct FreshLoop {
    std::string device;
    FileDescriptor keepAlive;
};

[[nodiscard]] FreshLoop makeLoop(const std::filesystem::path& image);
/// The same on an open file, for a caller who must be sure which one it is.
[[nodiscard]] FreshLoop makeLoop(const FileDescriptor& image);

/// Whether the device still uses a file.
[[nodiscard]] bool hasBackingFile(const std::string& device);

/// Waits until the loop device no longer uses any file, at most five seconds; false when it still does.
bool awaitLoopGone(const std::string& device);

/// Whether the kernel lists Btrfs; asked after a mount failed, because mounting is what loads the module.
[[nodiscard]] bool kernelHasBtrfs(const std::filesystem::path& list = "/proc/filesystems");

/// What a refused mount of a loop device means: "no-btrfs", or "device-busy" when it is worth looking for the
/// device again.
[[nodiscard]] Failure mountFailure(int error, const std::string& device);

} // namespace ferrobank::drive
