#include "Platform/linux/updates/worker/Relaunch.h"

#include "Platform/linux/Descriptor.h"
#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/StagingLock.h"
#include "Platform/linux/updates/install/Trial.h"
#include "Platform/linux/updates/worker/Display.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <string_view>
#include <thread>
#include <vector>

extern char** environ;

namespace ferrobank::updates {
namespace {

constexpr std::chrono::seconds kTrialTakes{40};
constexpr std::chrono::milliseconds kBetweenLooks{200};
constexpr std::chrono::seconds kPatience{5};

std::vector<char*> cleanEnvironment()
{
    std::vector<char*> kept;
    for (char** variable = environ; *variable; ++variable) {
        const std::string_view text(*variable);
        const bool isOfOldTree = text.starts_with("LD_LIBRARY_PATH=") || text.starts_with("APPDIR=");
        if (!isOfOldTree)
            kept.push_back(*variable);
    }
    kept.push_back(nullptr);
    return kept;
}

/// The new process, or 0 when it could not be started.
pid_t start(const InstallPlace& place, const std::string& previous)
{
    std::string executable = place.stableRoot() / "Contents/Linux/Ferrobank";
    std::string option = "--relaunched-from";
    std::string version = previous;
    std::array<char*, 4> arguments{executable.data(), option.data(), version.data(), nullptr};
    std::vector<char*> environment = cleanEnvironment();

    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    // The worker ignores it, and what is ignored is inherited.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &pipe);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    // Standard output is a pipe to the version that has ended; what is written goes where its errors go.
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&files, STDERR_FILENO, STDOUT_FILENO);
    pid_t process = 0;
    const int error = ::posix_spawn(&process, executable.c_str(), &files, &attributes, arguments.data(),
                                    environment.data());
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&attributes);
    return error == 0 ? process : 0;
}

enum class Ending { Healthy, Orderly, Failed };

Ending watch(const InstallPlace& place, pid_t process)
{
    const auto deadline = std::chrono::steady_clock::now() + kTrialTakes;
    while (std::chrono::steady_clock::now() < deadline) {
        int status = 0;
        if (::waitpid(process, &status, WNOHANG) == process)
            return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? Ending::Orderly : Ending::Failed;
        if (!trialAt(place))
            return Ending::Healthy;
        std::this_thread::sleep_for(kBetweenLooks);
    }
    return Ending::Healthy;
}

} // namespace

bool waitForEnd(pid_t process, std::chrono::milliseconds limit)
{
    if (process <= 0)
        return true;
    const Descriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
    if (!handle.isOpen())
        return errno == ESRCH;
    pollfd waiting{handle.number(), POLLIN, 0};
    return ::poll(&waiting, 1, static_cast<int>(limit.count())) == 1;
}

void relaunchAndWatch(const InstallPlace& place, const std::string& previous)
{
    for (int failures = 0; failures < Trial::kMostFailedStarts; ++failures) {
        const auto before = trialAt(place);
        const pid_t process = start(place, previous);
        if (process != 0 && watch(place, process) != Ending::Failed)
            return;
        const auto trial = trialAt(place);
        if (!trial)
            return;
        // One that failed before it could count itself is counted here, unless there was nothing to show it
        // on: the session has ended, and the version is judged at its next start.
        if (before && trial->starts == before->starts) {
            if (!displayAnswers())
                return;
            countStart(place);
        }
    }
    try {
        const StagingLock lock(place, kPatience, StagingLock::Right::Trial);
        const auto now = std::chrono::duration_cast<std::chrono::seconds>(
            std::chrono::system_clock::now().time_since_epoch());
        if (const auto trial = trialAt(place))
            takeBack(place, *trial, now.count());
    } catch (const UpdateFailure& failure) {
        std::fprintf(stderr, "Ferrobank: %s\n", failure.what());
    }
    // Whichever version is in place: somebody waits for the program.
    start(place, previous);
}

} // namespace ferrobank::updates
