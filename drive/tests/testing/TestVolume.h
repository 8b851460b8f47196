#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace ferrobank::drive::testing {

/// Why this machine cannot mount loop volumes (not root, no loop devices, no Btrfs), or empty when it can.
/// Asked once per process.
[[nodiscard]] std::string volumesUnavailable();

/// A small file system in an image file, loop-mounted for one test and unmounted and removed with it, also
/// when the test fails. Needs root. The mount point and the image lie in `folder`, which must outlive it.
class TestVolume {
public:
    /// `kind` is "btrfs", "ext4", "vfat" or "xfs"; `options` is what `mount -o` gets besides `loop`.
    TestVolume(const std::filesystem::path& folder, const std::string& name, const std::string& kind,
               std::uint64_t bytes, const std::string& options = "");
    TestVolume(const TestVolume&) = delete;
    TestVolume& operator=(const TestVolume&) = delete;
    ~TestVolume();

    [[nodiscard]] const std::filesystem::path& mountPoint() const { return _mountPoint; }

    [[nodiscard]] const std::filesystem::path& image() const { return _image; }

    void remount(const std::string& options);
    void unmount();
    void mount(const std::string& options = "");

private:
    std::filesystem::path _image;
    std::filesystem::path _mountPoint;
    bool _mounted = false;
};

/// Runs a program with arguments, waits, and returns its exit status (128 + signal when a signal ended it).
int runProgram(std::initializer_list<std::string> arguments);

} // namespace ferrobank::drive::testing
