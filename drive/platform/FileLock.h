#pragma once

#include "platform/FileDescriptor.h"

#include <filesystem>
#include <optional>

namespace ferrobank::drive {

/// An exclusive advisory lock (flock) on a file, held while this value lives. The kernel lets it go with the
/// last process that has the descriptor, so a killed holder never leaves it behind.
class FileLock {
public:
    /// Takes the lock, making the file if needed, or gives nothing when somebody else holds it. Throws
    /// Failure when the file cannot be opened.
    [[nodiscard]] static std::optional<FileLock> tryTake(const std::filesystem::path& path);
    /// Takes over a descriptor that already carries the lock: after `execve` in the same process.
    [[nodiscard]] static FileLock inherit(int descriptor);
    /// Whether somebody holds the lock now. A file that is not there is not locked.
    [[nodiscard]] static bool isHeld(const std::filesystem::path& path);

    [[nodiscard]] int descriptor() const noexcept { return _file.get(); }

private:
    explicit FileLock(FileDescriptor file) : _file(std::move(file)) {}

    FileDescriptor _file;
};

} // namespace ferrobank::drive
