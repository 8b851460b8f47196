#include "platform/Log.h"

#include "platform/FileDescriptor.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>
#include <utility>

namespace ferrobank::drive {

namespace {

std::string datedLine(std::string_view text)
{
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    ::localtime_r(&now.tv_sec, &local);
    char stamp[64];
    const std::size_t length = std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);
    char rest[48];
    std::snprintf(rest, sizeof rest, ".%03ld [%d] ", now.tv_nsec / 1'000'000, ::getpid());
    std::string line(stamp, length);
    line += rest;
    while (!text.empty() && text.back() == '\n') {
        text.remove_suffix(1);
    }
    for (const char character : text) {
        line += character;
        if (character == '\n') {
            line += "    ";
        }
    }
    line += '\n';
    return line;
}

void rotate(const std::filesystem::path& path)
{
    for (int number = Log::kFiles - 2; number >= 0; --number) {
        const std::string from = number == 0 ? path.string() : path.string() + "." + std::to_string(number);
        const std::string into = path.string() + "." + std::to_string(number + 1);
        ::rename(from.c_str(), into.c_str());
    }
}

/// The open log file with its lock, after a rotation by whoever came first.
FileDescriptor openForAppending(const std::filesystem::path& path)
{
    for (int attempt = 0; attempt < 8; ++attempt) {
        FileDescriptor file(
            ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
        if (!file || ::flock(file.get(), LOCK_EX) != 0) {
            return {};
        }
        struct stat opened{};
        struct stat named{};
        const bool stillNamed = ::fstat(file.get(), &opened) == 0 && ::stat(path.c_str(), &named) == 0 &&
                                opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
        if (stillNamed && opened.st_size < Log::kFileBytes) {
            return file;
        }
        if (stillNamed) {
            rotate(path);
        }
    }
    return {};
}

} // namespace

Log::Log(std::filesystem::path path) : _path(std::move(path)) {}

void Log::write(std::string_view text) const
{
    const std::string line = datedLine(text);
    std::error_code ignored;
    std::filesystem::create_directories(_path.parent_path(), ignored);
    const FileDescriptor file = openForAppending(_path);
    if (!file || ::write(file.get(), line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        std::fputs(line.c_str(), stderr);
    }
}

RepeatedLog::RepeatedLog(Log log, Clock clock) : _log(std::move(log)), _clock(std::move(clock)) {}

void RepeatedLog::write(const std::string& text)
{
    const auto now = _clock();
    const auto same = std::find_if(_written.begin(), _written.end(),
                                   [&](const auto& written) { return written.first == text; });
    if (same != _written.end()) {
        if (now - same->second < kSilence) {
            return;
        }
        _written.erase(same);
    }
    if (_written.size() == kTexts) {
        _written.erase(_written.begin());
    }
    _written.emplace_back(text, now);
    _log.write(text);
}

} // namespace ferrobank::drive
