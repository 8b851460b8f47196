#pragma once

#include <filesystem>
#include <string>

namespace ferrobank::drive {

/// How an attempt to write to the drive ended.
struct WriteTrial {
    enum class End { Written, Failed, TimedOut };

    End end = End::Failed;
    /// The system's words for what failed.
    std::string reason;
};

/// Writes a file of 4 KiB into the tool's folder on the drive, syncs it, reads it back and removes it, in a
/// child process that is given three seconds: a drive that hangs must not hang the caller.
[[nodiscard]] WriteTrial tryToWrite(const std::filesystem::path& mountPoint);

} // namespace ferrobank::drive
