#include "Platform/linux/login/DetachedAgent.h"

#include "Platform/LoginItemRegistry.h"
#include "Platform/linux/Descriptor.h"
#include "Platform/linux/SmallFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace ferrobank {

namespace {

constexpr std::size_t kProcessFileLimit = std::size_t{64} * 1024;
/// What the kernel keeps of a program's name, for a script its file's name.
constexpr std::size_t kCommLength = 15;

/// One process, held so that its number cannot pass on to another meanwhile.
struct HeldProcess {
    Descriptor handle;
    pid_t number = 0;
};

std::vector<std::string> splitAtZeros(std::string_view text)
{
    std::vector<std::string> words;
    while (!text.empty()) {
        const std::size_t end = text.find('\0');
        words.emplace_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return words;
}

bool isProgram(const std::filesystem::path& process, const std::filesystem::path& program)
{
    std::error_code error;
    const std::filesystem::path executable = std::filesystem::read_symlink(process / "exe", error);
    if (!error && (executable == program || executable == program.native() + " (deleted)")) {
        return true;
    }
    // A script runs inside its interpreter, under its own name.
    const std::string comm = readSmallFile(process / "comm", kProcessFileLimit).value_or("");
    return comm == program.filename().native().substr(0, kCommLength) + '\n';
}

bool hasArguments(const std::filesystem::path& process, const CommandLine& command)
{
    const auto text = readSmallFile(process / "cmdline", kProcessFileLimit);
    const std::vector<std::string> words = text ? splitAtZeros(*text) : std::vector<std::string>{};
    std::vector<std::string> wanted = command.arguments;
    wanted.insert(wanted.begin(), command.program.native());
    return words.size() >= wanted.size() && std::equal(wanted.rbegin(), wanted.rend(), words.rbegin());
}

bool isAgent(const std::filesystem::path& process, const CommandLine& command)
{
    struct stat facts{};
    return stat(process.c_str(), &facts) == 0 && facts.st_uid == geteuid() &&
           hasArguments(process, command) && isProgram(process, command.program);
}

std::vector<HeldProcess> findAgents(const CommandLine& command)
{
    std::vector<HeldProcess> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error))
    {
        const std::string name = entry->path().filename();
        pid_t number = 0;
        const auto [rest, failure] = std::from_chars(name.data(), name.data() + name.size(), number);
        if (failure != std::errc() || rest != name.data() + name.size() || number == getpid()) {
            continue;
        }
        HeldProcess process{Descriptor(static_cast<int>(syscall(SYS_pidfd_open, number, 0U))), number};
        if (process.handle.isOpen() && isAgent(entry->path(), command)) {
            found.push_back(std::move(process));
        }
    }
    return found;
}

// The two functions below run in forked children, where only calls are allowed that are safe after the fork
// of a program with threads.

[[noreturn]] void giveUp(int report)
{
    const int reason = errno;
    [[maybe_unused]] const ssize_t written = write(report, &reason, sizeof reason);
    _exit(127);
}

[[noreturn]] void becomeAgent(char** words, int report)
{
    // The child in between ends at once, so that the agent belongs to the session's first process.
    const pid_t agent = setsid() < 0 ? -1 : fork();
    if (agent < 0) {
        giveUp(report);
    }
    if (agent > 0) {
        _exit(0);
    }
    const int null = open("/dev/null", O_RDWR);
    sigset_t none;
    sigemptyset(&none);
    if (null < 0 || dup2(null, STDIN_FILENO) < 0 || dup2(null, STDOUT_FILENO) < 0 ||
        dup2(null, STDERR_FILENO) < 0 || chdir("/") != 0 || sigprocmask(SIG_SETMASK, &none, nullptr) != 0 ||
        signal(SIGPIPE, SIG_DFL) == SIG_ERR || close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC) != 0)
    {
        giveUp(report);
    }
    execv(words[0], words);
    giveUp(report);
}

} // namespace

DetachedAgent::DetachedAgent(CommandLine command) : _command(std::move(command)) {}

bool DetachedAgent::runs() const
{
    return !findAgents(_command).empty();
}

void DetachedAgent::start()
{
    if (runs()) {
        return;
    }
    std::string program = _command.program.native();
    std::vector<std::string> arguments = _command.arguments;
    std::vector<char*> words{program.data()};
    for (std::string& argument : arguments) {
        words.push_back(argument.data());
    }
    words.push_back(nullptr);

    int ends[2] = {-1, -1};
    int failure = pipe2(ends, O_CLOEXEC) == 0 ? 0 : errno;
    Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    const pid_t between = failure == 0 ? fork() : -1;
    if (between == 0) {
        becomeAgent(words.data(), writing.number());
    }
    if (between > 0) {
        writing.reset();
        while (waitpid(between, nullptr, 0) < 0 && errno == EINTR) {
        }
        // Nothing comes once the program runs: its end of the pipe closes by itself.
        while (read(reading.number(), &failure, sizeof failure) < 0 && errno == EINTR) {
        }
    } else if (failure == 0) {
        failure = errno;
    }
    if (failure != 0) {
        throw RegistryError(
            "The drive's service could not be started: " + std::string(std::strerror(failure)) + ".");
    }
}

void DetachedAgent::stop(std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    const std::vector<HeldProcess> agents = findAgents(_command);
    for (const HeldProcess& agent : agents) {
        syscall(SYS_pidfd_send_signal, agent.handle.number(), SIGTERM, nullptr, 0U);
    }
    for (const HeldProcess& agent : agents) {
        pollfd ended{agent.handle.number(), POLLIN, 0};
        int ready = 0;
        do {
            const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            ready = poll(&ended, 1, rest.count() > 0 ? static_cast<int>(rest.count()) : 0);
        } while (ready < 0 && errno == EINTR);
        if (ready == 0) {
            throw RegistryError("The drive's service (process " + std::to_string(agent.number) +
                                ") is still running. Try again when it has finished.");
        }
    }
}

} // namespace ferrobank
