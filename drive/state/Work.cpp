#include "state/Work.h"

#include "platform/Failure.h"
#include "platform/Files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <nlohmann/json.hpp>
#include <thread>
#include <utility>

namespace ferrobank::drive {

namespace {

using nlohmann::json;

/// Always the same length, so that a reader finds one whole text whenever it comes.
constexpr std::size_t kTextBytes = 256;
constexpr std::chrono::milliseconds kStep{20};
/// A reader that asks whether somebody has the lock holds it itself for a moment.
constexpr std::chrono::milliseconds kReaders{200};

constexpr std::array<std::pair<Work::Phase, const char*>, 6> kPhases{{{Work::Phase::Starting, "starting"},
                                                                      {Work::Phase::Copying, "copying"},
                                                                      {Work::Phase::Verifying, "verifying"},
                                                                      {Work::Phase::Detaching, "detaching"},
                                                                      {Work::Phase::Comparing, "comparing"},
                                                                      {Work::Phase::Removing, "removing"}}};

bool isAt(int file, const std::filesystem::path& path)
{
    struct stat held{};
    struct stat there{};
    return ::fstat(file, &held) == 0 && ::lstat(path.c_str(), &there) == 0 && held.st_ino == there.st_ino &&
           held.st_dev == there.st_dev;
}

std::string sentenceOf(const std::optional<Work>& work)
{
    if (!work) {
        return "Another ferrobank command is at work on the drive. Wait until it ends, then try again.";
    }
    return "“ferrobank " + work->command + "” (process " + std::to_string(work->process) +
           ") is at work on the drive. Wait until it ends, then try again.";
}

} // namespace

std::string phaseWord(Work::Phase phase)
{
    for (const auto& [value, word] : kPhases) {
        if (value == phase) {
            return word;
        }
    }
    return {};
}

std::string Work::toText() const
{
    std::string text = json{
        {"command", command},
        {"process", process},
        {"phase", phaseWord(phase)},
        {"done", done},
        {"total", total}}.dump();
    text.resize(std::max(text.size(), kTextBytes - 1), ' ');
    return text + "\n";
}

std::optional<Work> Work::fromText(const std::string& text)
{
    try {
        const json root = json::parse(text);
        const std::string word = root.at("phase");
        for (const auto& [value, name] : kPhases) {
            if (word == name) {
                return Work{.command = root.at("command"),
                            .process = root.at("process"),
                            .phase = value,
                            .done = root.at("done"),
                            .total = root.at("total")};
            }
        }
    } catch (const std::exception&) {
        return std::nullopt;
    }
    return std::nullopt;
}

std::optional<Work> Work::atWork(const Paths& paths)
{
    const FileDescriptor file(::open(paths.work.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!file || ::flock(file.get(), LOCK_SH | LOCK_NB) == 0 || errno != EWOULDBLOCK) {
        return std::nullopt;
    }
    std::array<char, 4096> text{};
    const ssize_t length = ::pread(file.get(), text.data(), text.size(), 0);
    return length > 0 ? fromText(std::string(text.data(), static_cast<std::size_t>(length))) : std::nullopt;
}

WorkLock::WorkLock(FileDescriptor file, std::filesystem::path path, std::string command)
    : _file(std::move(file)), _path(std::move(path))
{
    _work.command = std::move(command);
    _work.process = ::getpid();
    tell(Work::Phase::Starting);
}

WorkLock::~WorkLock()
{
    if (_file) {
        // Before the lock goes. Whoever waits for this very file finds that it is no longer the one.
        ::unlink(_path.c_str());
    }
}

std::optional<WorkLock> WorkLock::tryTake(const Paths& paths, const std::string& command)
{
    ensurePrivateFolder(paths.support);
    const auto limit = std::chrono::steady_clock::now() + kReaders;
    for (;;) {
        FileDescriptor file(::open(paths.work.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
        if (!file) {
            throw systemFailure("Cannot open " + paths.work.string(), errno);
        }
        if (::flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
            if (isAt(file.get(), paths.work)) {
                return WorkLock(std::move(file), paths.work, command);
            }
            continue;
        }
        if (errno != EWOULDBLOCK) {
            throw systemFailure("Cannot lock " + paths.work.string(), errno);
        }
        if (std::chrono::steady_clock::now() >= limit) {
            return std::nullopt;
        }
        std::this_thread::sleep_for(kStep);
    }
}

WorkLock WorkLock::take(const Paths& paths, const std::string& command, std::chrono::milliseconds patience)
{
    const auto limit = std::chrono::steady_clock::now() + patience;
    for (;;) {
        if (std::optional<WorkLock> lock = tryTake(paths, command)) {
            return std::move(*lock);
        }
        const std::optional<Work> other = Work::atWork(paths);
        if ((other && other->command != "serve") || std::chrono::steady_clock::now() >= limit) {
            throw Failure(sentenceOf(other), "at-work");
        }
        std::this_thread::sleep_for(kStep);
    }
}

void WorkLock::tell(Work::Phase phase, std::uint64_t done, std::uint64_t total)
{
    _work.phase = phase;
    _work.done = done;
    _work.total = total;
    const std::string text = _work.toText();
    // Nobody but the status shows it, so a disk that takes no more is no reason to stop.
    static_cast<void>(::pwrite(_file.get(), text.data(), text.size(), 0));
}

} // namespace ferrobank::drive
