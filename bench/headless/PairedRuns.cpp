// Times whole processes in turns, so that whatever else the machine does falls on all of them alike:
//   paired-runs ROUNDS "program argument..." "program argument..."
// One line a command: median, 95th percentile and minimum of the wall time, median of the processor time, all
// in milliseconds, and how many runs ended with another status than 0. The last line is the median over the
// rounds of the first command's time divided by the second's. Words of a command are separated by tabs.

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int kWarmUps = 5;

struct Command {
    std::vector<std::string> words;
    std::vector<double> wall;
    std::vector<double> processor;
    int failures = 0;
};

Command parseCommand(std::string text)
{
    Command command;
    std::size_t begin = 0;
    for (std::size_t tab = 0; tab != std::string::npos; begin = tab + 1) {
        tab = text.find('\t', begin);
        command.words.push_back(text.substr(begin, tab - begin));
    }
    return command;
}

double milliseconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

double quantile(std::vector<double> values, double part)
{
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
}

/// Runs the command with its output thrown away; false if it cannot be started.
bool run(Command& command, bool counts)
{
    std::vector<char*> words;
    for (std::string& word : command.words) {
        words.push_back(word.data());
    }
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = 0;
    const auto begin = std::chrono::steady_clock::now();
    const int error = posix_spawnp(&process, words[0], &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        std::fprintf(stderr, "%s: %s\n", words[0], std::strerror(error));
        return false;
    }
    int status = 0;
    rusage usage{};
    wait4(process, &status, 0, &usage);
    const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - begin;
    if (counts) {
        command.wall.push_back(wall.count());
        command.processor.push_back(milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime));
        command.failures += status != 0 ? 1 : 0;
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    const int rounds = argc == 4 ? std::atoi(argv[1]) : 0;
    if (rounds < 1) {
        std::fprintf(stderr, "usage: paired-runs ROUNDS COMMAND COMMAND\n");
        return 2;
    }
    Command first = parseCommand(argv[2]);
    Command second = parseCommand(argv[3]);
    std::vector<double> ratios;
    for (int round = -kWarmUps; round < rounds; ++round) {
        if (!run(first, round >= 0) || !run(second, round >= 0)) {
            return 1;
        }
        if (round >= 0) {
            ratios.push_back(first.wall.back() / second.wall.back());
        }
    }
    for (const Command& command : {first, second}) {
        std::printf("%.2f %.2f %.2f %.2f %d\n", quantile(command.wall, 0.5), quantile(command.wall, 0.95),
                    quantile(command.wall, 0), quantile(command.processor, 0.5), command.failures);
    }
    std::printf("%.3f\n", quantile(ratios, 0.5));
    return 0;
}
