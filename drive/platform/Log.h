#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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

/// For what is tried again and again: the same words are written once, and again only when an hour has passed
/// since, so that a failure that lasts does not push everything else out of the log. One thread.
class RepeatedLog {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    explicit RepeatedLog(Log log, Clock clock = std::chrono::steady_clock::now);

    void write(const std::string& text);

    static constexpr std::chrono::hours kSilence{1};
    /// So many different texts are remembered; more forget the oldest.
    static constexpr std::size_t kTexts = 16;

private:
    Log _log;
    Clock _clock;
    std::vector<std::pair<std::string, std::chrono::steady_clock::time_point>> _written;
};

} // namespace ferrobank::drive
