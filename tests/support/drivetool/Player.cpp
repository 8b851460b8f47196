#include "Player.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

namespace scripted {

namespace {

using nlohmann::json;

void write(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor, text.data(), text.size());
        if (count < 0 && errno != EINTR) {
            std::_Exit(74);
        }
        text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
}

int stream(const json& name)
{
    return name == "err" ? STDERR_FILENO : STDOUT_FILENO;
}

std::string bytesOf(const std::string& hex)
{
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

void pause(const json& milliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds.get<int>()));
}

[[noreturn]] void hang()
{
    for (;;) {
        ::pause();
    }
}

/// Hangs as long as somebody reads the output: for tests whose program ends before its tools do.
void hangWhileRead()
{
    pollfd output{STDOUT_FILENO, 0, 0};
    while (::poll(&output, 1, -1) < 0) {
    }
}

void waitFor(const std::filesystem::path& file)
{
    while (!std::filesystem::exists(file)) {
        pause(5);
    }
}

/// {"stream": "out", "bytes": N, "text": "x"}: the text over and over, N bytes in all.
void flood(const json& step)
{
    const auto text = step.value("text", std::string("x"));
    std::string block;
    while (block.size() < 64 * 1024) {
        block += text;
    }
    auto left = step.at("bytes").get<std::size_t>();
    while (left > 0) {
        const std::size_t count = std::min(left, block.size());
        write(stream(step.value("stream", "out")), std::string_view(block).substr(0, count));
        left -= count;
    }
}

/// {"count": N, "text": "line"}: numbered when the text holds "@".
void lines(const json& step)
{
    const auto text = step.at("text").get<std::string>();
    const std::size_t mark = text.find('@');
    std::string block;
    for (std::size_t i = 0, count = step.at("count").get<std::size_t>(); i < count; ++i) {
        if (mark == std::string::npos) {
            block += text;
        } else {
            block.append(text, 0, mark).append(std::to_string(i)).append(text, mark + 1);
        }
        block += '\n';
        if (block.size() > 64 * 1024 || i + 1 == count) {
            write(STDOUT_FILENO, block);
            block.clear();
        }
    }
}

/// A process of its own that keeps our outputs open and plays its steps.
void grandchild(const json& steps)
{
    const pid_t process = ::fork();
    if (process == 0) {
        std::_Exit(play(steps));
    }
}

/// What was inherited, as one JSON line.
void report()
{
    json open = json::array();
    for (int descriptor = 0; descriptor < 256; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) >= 0) {
            open.push_back(descriptor);
        }
    }
    sigset_t blocked;
    ::sigprocmask(SIG_SETMASK, nullptr, &blocked);
    struct sigaction pipe{};
    ::sigaction(SIGPIPE, nullptr, &pipe);
    const char* const variable = std::getenv("FERROBANK_TEST");
    std::string input;
    std::array<pollfd, 1> standardInput{{{STDIN_FILENO, POLLIN, 0}}};
    if (::poll(standardInput.data(), 1, 0) == 1) {
        std::array<char, 256> buffer{};
        const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
        input.assign(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    const json facts{{"folder", std::filesystem::current_path().string()},
                     {"variable", variable == nullptr ? json() : json(variable)},
                     {"path", std::getenv("PATH") == nullptr ? json() : json(std::getenv("PATH"))},
                     {"input", input},
                     {"open", open},
                     {"terminates", ::sigismember(&blocked, SIGTERM) == 0},
                     {"broken_pipe_ends", pipe.sa_handler == SIG_DFL}};
    write(STDOUT_FILENO, facts.dump() + '\n');
}

void printFile(const std::filesystem::path& file)
{
    std::ifstream input(file, std::ios::binary);
    write(STDOUT_FILENO, std::string(std::istreambuf_iterator<char>(input), {}));
}

const std::map<std::string, std::function<void(const json&)>, std::less<>> kSteps{
    {"out", [](const json& text) { write(STDOUT_FILENO, text.get<std::string>()); }},
    {"err", [](const json& text) { write(STDERR_FILENO, text.get<std::string>()); }},
    {"out_hex", [](const json& hex) { write(STDOUT_FILENO, bytesOf(hex)); }},
    {"err_hex", [](const json& hex) { write(STDERR_FILENO, bytesOf(hex)); }},
    {"file", [](const json& path) { printFile(path.get<std::string>()); }},
    {"pause", pause},
    {"wait_for", [](const json& path) { waitFor(path.get<std::string>()); }},
    {"touch", [](const json& path) { std::ofstream(path.get<std::string>()).put('x'); }},
    {"flood", flood},
    {"lines", lines},
    {"close", [](const json& name) { ::close(stream(name)); }},
    {"grandchild", grandchild},
    {"report", [](const json&) { report(); }},
    {"hang", [](const json&) { hang(); }},
    {"hang_while_read", [](const json&) { hangWhileRead(); }},
    {"signal", [](const json& number) { ::raise(number.get<int>()); }},
};

} // namespace

int play(const json& steps)
{
    for (const json& step : steps) {
        const auto only = step.begin();
        const std::string& name = only.key();
        const json& value = only.value();
        if (name == "exit") {
            return value.get<int>();
        }
        const auto known = kSteps.find(name);
        if (known == kSteps.end()) {
            throw std::runtime_error("unknown step " + name);
        }
        known->second(value);
    }
    return 0;
}

} // namespace scripted
