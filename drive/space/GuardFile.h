#pragma once

#include <cstdint>
#include <filesystem>
#include <stop_token>

namespace ferrobank::drive {

/// The file `.ferrobank/guard` on the drive: allocated but never written, it takes free space away from the drive so
/// that programs get "No space left on device" before the computer's disk is full. It costs the host nothing but
/// its metadata. Used by one thread.
class GuardFile {
public:
    explicit GuardFile(const std::filesystem::path& mountPoint);

    /// Bytes allocated now; 0 when it is not there.
    [[nodiscard]] std::uint64_t size() const;
    /// Grows or shrinks it towards `bytes` in steps of 256 GiB, stopping between two when asked, or where the drive
    /// has no more room. Throws Failure when the drive refuses (read-only, say).
    void resize(std::uint64_t bytes, const std::stop_token& stop) const;

private:
    std::filesystem::path _folder;
    std::filesystem::path _file;
};

} // namespace ferrobank::drive
