#pragma once

#include <filesystem>
#include <string_view>

namespace ferrobank::drive {

/// The drive's log file: one dated line per event, at most five files of 1 MB (`ferrobank.log`, `.1` to
/// `.4`). Several processes and threads may write at once. A log that cannot be written never stops the
/// drive: the line then goes to standard error.
class Log {
public:
    explicit Log(std::filesystem::path path);

    /// Further lines of a text are indented, so that a dated line always begins an event.
    void write(std::string_view text) const;

    [[nodiscard]] const std::filesystem::path& path() const { return _path; }

    static constexpr int kFiles = 5;
    static constexpr long kFileBytes = 1'000'000;

private:
    std::filesystem::path _path;
};

} // namespace ferrobank::drive
