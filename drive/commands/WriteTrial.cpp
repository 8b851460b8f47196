#include "commands/WriteTrial.h"

#include "platform/Failure.h"
#include "platform/FileDescriptor.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace ferrobank::drive {

namespace {

constexpr int kLimitMilliseconds = 3000;
constexpr std::size_t kTrialBytes = 4096;

int writeSyncAndReadBack(int folder, const char* name)
{
    std::array<char, kTrialBytes> written{};
    std::array<char, kTrialBytes> read{};
    for (std::size_t index = 0; index < written.size(); ++index) {
        written[index] = static_cast<char>(index * 31 + index / 256);
    }
    const FileDescriptor file(
        ::openat(folder, name, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) {
        return errno;
    }
    errno = EIO;
    if (::pwrite(file.get(), written.data(), written.size(), 0) != static_cast<ssize_t>(written.size()) ||
        ::fsync(file.get()) != 0 || ::posix_fadvise(file.get(), 0, 0, POSIX_FADV_DONTNEED) != 0 ||
        ::pread(file.get(), read.data(), read.size(), 0) != static_cast<ssize_t>(read.size()))
    {
        return errno;
    }
    return read == written ? 0 : EIO;
}

/// Runs in the child, where only async-signal-safe calls are allowed; the errno, or 0.
int trial(const char* mountPoint, const char* name)
{
    const FileDescriptor root(::open(mountPoint, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct statfs volume{};
    if (!root || ::fstatfs(root.get(), &volume) != 0) {
        return errno;
    }
    if (volume.f_type != BTRFS_SUPER_MAGIC) {
        return ENODEV;
    }
    if (::mkdirat(root.get(), ".ferrobank", 0700) != 0 && errno != EEXIST) {
        return errno;
    }
    const FileDescriptor folder(
        ::openat(root.get(), ".ferrobank", O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
    if (!folder) {
        return errno;
    }
    const int error = writeSyncAndReadBack(folder.get(), name);
    ::unlinkat(folder.get(), name, 0);
    return error;
}

} // namespace

WriteTrial tryToWrite(const std::filesystem::path& mountPoint)
{
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        throw systemFailure("Cannot try the drive", errno);
    }
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);
    const std::string folder = mountPoint.string();
    const std::string name = "trial-" + std::to_string(::getpid());
    const pid_t child = ::fork();
    if (child < 0) {
        throw systemFailure("Cannot try the drive", errno);
    }
    if (child == 0) {
        const int error = trial(folder.c_str(), name.c_str());
        const ssize_t put = ::write(writing.get(), &error, sizeof error);
        ::_exit(put == static_cast<ssize_t>(sizeof error) ? 0 : 1);
    }
    writing.reset();
    pollfd answer{.fd = reading.get(), .events = POLLIN, .revents = 0};
    int error = 0;
    if (::poll(&answer, 1, kLimitMilliseconds) <= 0) {
        // A child that hangs in the kernel cannot be waited for; it ends when the drive does.
        ::kill(child, SIGKILL);
        return {.end = WriteTrial::End::TimedOut, .reason = {}};
    }
    const ssize_t got = ::read(reading.get(), &error, sizeof error);
    ::waitpid(child, nullptr, 0);
    if (got != static_cast<ssize_t>(sizeof error)) {
        error = EIO;
    }
    if (error == 0) {
        return {.end = WriteTrial::End::Written, .reason = {}};
    }
    return {.end = WriteTrial::End::Failed, .reason = std::generic_category().message(error)};
}

} // namespace ferrobank::drive
