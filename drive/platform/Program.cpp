#include "platform/Program.h"

#include "platform/FileDescriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kKeptOutput = 64 * 1024;
constexpr std::chrono::seconds kEndLimit{5};
constexpr int kEndStepMilliseconds = 5;

/// In the child, between fork and exec: only what a program with threads may call there.
[[noreturn]] void become(const char* program, char* const* arguments, char* const* environment, int input,
                         int output, pid_t parent)
{
    // It must not go on with the store when whoever wanted it was killed; that may have happened already.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        ::_exit(127);
    }
    ::dup2(input >= 0 ? input : ::open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(output, STDERR_FILENO);
    // Ours are marked to be closed; what whoever started us forgot to mark is none of the program's business.
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    // The serving process blocks the signals it reads from a descriptor; children must get the usual ones
    // back.
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::execve(program, arguments, environment);
    ::_exit(127);
}

/// Starts the child with its output in the pipe; 0 when it could not be started.
pid_t spawn(const std::filesystem::path& program, const std::vector<std::string>& arguments, int input,
            int output)
{
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

    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child == 0) {
        become(program.c_str(), pointers.data(), environment.data(), input, output, parent);
    }
    return std::max(child, 0);
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

/// Waits for a child whose outputs are closed or who was killed; nothing when it does not end. One that hangs
/// in the kernel, or belongs to root by now, cannot be ended; it stays ours, unwaited for, until we end.
std::optional<int> awaitEnd(pid_t child)
{
    const auto limit = std::chrono::steady_clock::now() + kEndLimit;
    int status = 0;
    for (;;) {
        const pid_t ended = ::waitpid(child, &status, WNOHANG);
        if (ended == child) {
            return status;
        }
        if ((ended < 0 && errno != EINTR) || std::chrono::steady_clock::now() >= limit) {
            return std::nullopt;
        }
        ::poll(nullptr, 0, kEndStepMilliseconds);
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
                                std::chrono::seconds limit, int input)
{
    ProgramOutcome outcome;
    const std::filesystem::path program = findSystemProgram(name);
    int ends[2] = {-1, -1};
    if (program.empty() || ::pipe2(ends, O_CLOEXEC) != 0) {
        return outcome;
    }
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);
    const pid_t child = spawn(program, arguments, input, writing.get());
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
    const std::optional<int> status = awaitEnd(child);
    if (!status) {
        outcome.end = ProgramOutcome::End::TimedOut;
        return outcome;
    }
    outcome.status = WIFEXITED(*status) ? WEXITSTATUS(*status) : 128 + WTERMSIG(*status);
    return outcome;
}

} // namespace ferrobank::drive
