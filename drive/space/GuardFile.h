#pragma once

#include "platform/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <stop_token>
#include <string>

namespace ferrobank::drive {

/// The space guard: a file on the drive without a name, allocated but never written, that takes free space
/// away from the drive so that programs get "No space left on device" before the computer's disk is full.
/// Without a name no tool that reads, sums up or copies the drive ever meets it. It lives as long as somebody
/// has it open, in a subvolume of its own (`.ferrobank/space`), so that no snapshot of the files holds on to
/// it and its changes are told from those of the files. It costs the host nothing but its metadata.
///
/// It is only ever made on the volume with the given identifier, whatever lies at the mount point or at
/// `.ferrobank`: on the computer's own disk it would fill that. Used by one thread at a time.
class GuardFile {
public:
    /// `earlier` is the guard that another process kept open; taken only if it is one of this volume.
    GuardFile(std::filesystem::path mountPoint, std::string uuid, FileDescriptor earlier = {});

    /// Bytes allocated now; 0 when there is none.
    [[nodiscard]] std::uint64_t size() const;
    /// Has the drive count what was changed on it, which it otherwise does twice a minute: until then its
    /// free bytes are those from before the guard was resized. Data that programs wrote is not waited for.
    /// Throws Failure.
    void settle() const;
    /// Grows or shrinks it to `bytes`, rounded up to 4 MiB, in pieces of at most 256 MiB, stopping between
    /// two when asked, or where the drive has no more room. It never ends within a piece, so that its
    /// allocated bytes are all that it takes. Throws Failure when the drive refuses (read-only, say).
    void resize(std::uint64_t bytes, const std::stop_token& stop);

    /// The open file, or -1.
    [[nodiscard]] int descriptor() const noexcept { return _file.get(); }

    /// Gives the open file away; this object then has none.
    [[nodiscard]] FileDescriptor take() noexcept { return std::move(_file); }

private:
    [[nodiscard]] FileDescriptor openDrive() const;
    [[nodiscard]] bool isOnDrive(const FileDescriptor& descriptor) const;
    [[nodiscard]] FileDescriptor make() const;
    [[nodiscard]] FileDescriptor takeNamedOne(const FileDescriptor& toolFolder) const;

    std::filesystem::path _mountPoint;
    std::string _uuid;
    FileDescriptor _file;
};

} // namespace ferrobank::drive
