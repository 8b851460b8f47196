#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// How one run of a system program ended.
struct ProgramOutcome {
    enum class End { Exited, TimedOut, NotFound };

    End end = End::NotFound;
    /// Exit status; 128 + the signal when a signal ended it.
    int status = -1;
    /// Both outputs together, the first 64 KiB.
    std::string output;

    [[nodiscard]] bool succeeded() const { return end == End::Exited && status == 0; }
};

/// Runs a system program (`mkfs.btrfs`, `btrfs`, `mount`) by name with a list of arguments, in the C locale
/// and with no input, and waits for it. It is looked for in the system's own folders only, which users'
/// search paths often lack. When `limit` passes it is killed, and also when the calling thread ends before
/// it. A program that changes to root (pkexec) can be killed by neither: it goes on by itself, and the wait
/// for it ends a few seconds after the limit. `input` is a descriptor that becomes its standard input;
/// whatever that is, a lock for instance, stays open for as long as the program runs.
[[nodiscard]] ProgramOutcome runSystemProgram(const std::string& name,
                                              const std::vector<std::string>& arguments,
                                              std::chrono::seconds limit, int input = -1);

/// The full path of a system program, or empty.
[[nodiscard]] std::filesystem::path findSystemProgram(const std::string& name);

} // namespace ferrobank::drive
