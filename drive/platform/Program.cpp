#include "platform/Program.h"

#include "platform/FileDescriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kKeptOutput = 64 * 1024;

/// Starts the child with its output in the pipe; 0 when it could not be started.
pid_t spawn(const std::filesystem::path& program, const std::vector<std::string>& arguments, int output)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);

    // The serving process blocks the signals it reads from a descriptor; children must get the usual ones
    // back.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);

    std::vector<std::string> texts{program.string()};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    std::array<std::string, 2> variables{"PATH=/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL=C.UTF-8"};
    std::array<char*, 3> environment{variables[0].data(), variables[1].data(), nullptr};

    pid_t child = 0;
    const int error =
        posix_spawn(&child, program.c_str(), &actions, &attributes, pointers.data(), environment.data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return error == 0 ? child : 0;
}

enum class Reading { Ended, TimedOut };

Reading readUntilClosed(int pipe, std::chrono::steady_clock::time_point deadline, std::string& output)
{
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            return Reading::TimedOut;
        }
        pollfd waiting{.fd = pipe, .events = POLLIN, .revents = 0};
        if (::poll(&waiting, 1, static_cast<int>(std::min<long long>(left.count(), 1'000'000))) <= 0) {
            continue;
        }
        char piece[4096];
        const ssize_t got = ::read(pipe, piece, sizeof piece);
        if (got < 0 && (errno == EINTR || errno == EAGAIN)) {
            continue;
        }
        if (got <= 0) {
            return Reading::Ended;
        }
        output.append(piece, std::min(static_cast<std::size_t>(got), kKeptOutput - output.size()));
    }
}

} // namespace

std::filesystem::path findSystemProgram(const std::string& name)
{
    for (const char* folder : {"/usr/sbin", "/usr/bin", "/sbin", "/bin", "/usr/local/sbin", "/usr/local/bin"})
    {
        std::filesystem::path candidate = std::filesystem::path(folder) / name;
        if (::access(candidate.c_str(), X_OK) == 0) {
            return candidate;
        }
    }
    return {};
}

ProgramOutcome runSystemProgram(const std::string& name, const std::vector<std::string>& arguments,
                                std::chrono::seconds limit)
{
    ProgramOutcome outcome;
    const std::filesystem::path program = findSystemProgram(name);
    int ends[2] = {-1, -1};
    if (program.empty() || ::pipe2(ends, O_CLOEXEC) != 0) {
        return outcome;
    }
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);
    const pid_t child = spawn(program, arguments, writing.get());
    writing.reset();
    if (child == 0) {
        return outcome;
    }
    const auto deadline = std::chrono::steady_clock::now() + limit;
    outcome.end = ProgramOutcome::End::Exited;
    if (readUntilClosed(reading.get(), deadline, outcome.output) == Reading::TimedOut) {
        outcome.end = ProgramOutcome::End::TimedOut;
        ::kill(child, SIGKILL);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return outcome;
}

} // namespace ferrobank::drive
