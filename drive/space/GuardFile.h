#pragma once

#include "platform/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <stop_token>
#include <string>

namespace ferrobank::drive {

/// The file `.ferrobank/guard` on the drive: allocated but never written, it takes free space away from the
/// drive so that programs get "No space left on device" before the computer's disk is full. It costs the host
/// nothing but its metadata. It is only ever made on the volume with the given identifier: on the bare folder
/// below a mount that has just gone, it would fill the computer's own disk. Used by one thread.
class GuardFile {
public:
    GuardFile(std::filesystem::path mountPoint, std::string uuid);

    /// Bytes allocated now; 0 when it is not there.
    [[nodiscard]] std::uint64_t size() const;
    /// Has the drive count what was changed on it, which it otherwise does twice a minute: until then its
    /// free bytes are those from before the guard was resized. Data that programs wrote is not waited for.
    /// Throws Failure.
    void settle() const;
    /// Grows or shrinks it to `bytes`, rounded up to 4 MiB, in pieces of at most 256 MiB, stopping between
    /// two when asked, or where the drive has no more room. It never ends within a piece, so that its
    /// allocated bytes are all that it takes. Throws Failure when the drive refuses (read-only, say).
    void resize(std::uint64_t bytes, const std::stop_token& stop) const;

private:
    [[nodiscard]] FileDescriptor openDrive() const;

    std::filesystem::path _mountPoint;
    std::string _uuid;
};

} // namespace ferrobank::drive
