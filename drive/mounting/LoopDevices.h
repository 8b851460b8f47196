#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// A loop device whose backing file is the drive's image, from /sys/block/loop*/loop. Readable by every user.
struct LoopDevice {
    /// "/dev/loop3"
    std::string device;
    bool readOnly = false;
    /// The image was deleted while this device was using it.
    bool backingDeleted = false;
};

/// How a backing file is recognised. ByName compares paths, and looks at other files only when they have the
/// image's own file name, so it never waits for a foreign disk; ByFile looks at every backing file, and so
/// finds hard links and bind mounts under any name.
enum class Recognise { ByName, ByFile };

/// All loop devices that use the image, in order. More than one is the double attachment that destroys data.
/// Throws Failure where the system lacks the means to look (descriptors, memory), which is never "none".
[[nodiscard]] std::vector<LoopDevice> loopsOf(const std::filesystem::path& image, Recognise how);

/// For tests: the same below another folder than /sys/block.
[[nodiscard]] std::vector<LoopDevice> loopsOf(const std::filesystem::path& image, Recognise how,
                                              const std::filesystem::path& blockDevices);

} // namespace ferrobank::drive
