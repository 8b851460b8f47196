#pragma once

#include "platform/FileDescriptor.h"

#include <filesystem>
#include <optional>

namespace ferrobank::drive {

/// An exclusive advisory lock on a file, held while this value lives. The kernel lets it go with the last
/// process that has the descriptor, so a killed holder never leaves it behind.
///
/// It is a lock of the open file description (fcntl), because only such a lock can be asked for without being
/// taken, with a flock beside it, which is what `flock(1)` and earlier versions look at.
class FileLock {
public:
    /// Takes the lock, making the file if needed, or gives nothing when somebody else holds it. Throws
    /// Failure when the file cannot be opened.
    [[nodiscard]] static std::optional<FileLock> tryTake(const std::filesystem::path& path);
    /// Takes over a descriptor that carries the lock already: after `execve` in the same process. Nothing,
    /// and the descriptor is left alone, unless it is open on the very file at the path and has its lock.
    [[nodiscard]] static std::optional<FileLock> inherit(int descriptor, const std::filesystem::path& path);
    /// Whether somebody holds the lock now; takes nothing, so that nobody who wants it is kept out. A file
    /// that is not there is not locked.
    [[nodiscard]] static bool isHeld(const std::filesystem::path& path);

    [[nodiscard]] int descriptor() const noexcept { return _file.get(); }

private:
    explicit FileLock(FileDescriptor file) : _file(std::move(file)) {}

    FileDescriptor _file;
};

} // namespace ferrobank::drive
