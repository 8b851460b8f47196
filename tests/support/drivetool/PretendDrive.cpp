#include "PretendDrive.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <thread>

namespace scripted {

namespace {

using nlohmann::json;

double now()
{
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

/// Stops the service the way the login-item registry started it; without a user manager nothing happens.
void stopUnit()
{
    std::array<std::string, 4> words{"systemctl", "--user", "stop", "org.ferrobank.Ferrobank.agent.service"};
    std::array<char*, 5> arguments{words[0].data(), words[1].data(), words[2].data(), words[3].data(),
                                   nullptr};
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = 0;
    if (::posix_spawnp(&process, "systemctl", &actions, nullptr, arguments.data(), environ) == 0) {
        ::waitpid(process, nullptr, 0);
    }
    ::posix_spawn_file_actions_destroy(&actions);
}

} // namespace

PretendDrive::PretendDrive(json settings) : _settings(std::move(settings))
{
    const char* const home = std::getenv("HOME");
    _home = home == nullptr ? "/nonexistent" : home;
    _support = _home / "Library/Application Support/Ferrobank";
}

int PretendDrive::command(const Arguments& arguments)
{
    if (arguments == Arguments{"status", "--json"}) {
        return status();
    }
    if (arguments == Arguments{"check", "--json"}) {
        return check();
    }
    if (arguments == Arguments{"serve"}) {
        return serve();
    }
    if (arguments == Arguments{"restart"} || arguments == Arguments{"restart", "--keep-mounted"}) {
        return restart(arguments.size() == 2);
    }
    if (!arguments.empty() && arguments.front() == "uninstall") {
        return uninstall(arguments);
    }
    std::cerr << "ferrobank: this pretend drive knows no such command\n";
    return 64;
}

bool PretendDrive::isServing(const json& state) const
{
    const pid_t process = state.value("serving", 0);
    return process > 0 && ::kill(process, 0) == 0;
}

std::string PretendDrive::attachError(const json& state) const
{
    const int failing = _settings.value("attach_error_times", 1);
    const auto words = _settings.value("attach_error", std::string());
    return isServing(state) && state.value("attaches", 0) <= failing ? words : std::string();
}

bool PretendDrive::isMounted(const json& state) const
{
    return isServing(state) && attachError(state).empty() &&
           now() >= state.value("since", 0.0) + _settings.value("mount_after", 3.0);
}

void PretendDrive::attach(json& state) const
{
    state["since"] = now();
    state["attaches"] = state.value("attaches", 0) + 1;
}

int PretendDrive::status()
{
    const json state = load();
    const bool mounted = isMounted(state);
    const auto mountpoint = _home / "Ferrobank";
    json answer{{"installed", state.value("installed", false)},
                {"mounted", mounted},
                {"mountpoint", mountpoint.string()},
                {"log", (_support / "ferrobank.log").string()}};
    if (const auto error = attachError(state); !error.empty()) {
        answer["attach_error"] = error;
    }
    if (mounted) {
        std::filesystem::create_directories(mountpoint);
        const double seconds = std::min(now() - state.value("since", 0.0), 3600.0);
        const auto used = static_cast<std::uint64_t>(seconds * _settings.value("bytes_a_second", 250e6));
        answer["volume_used"] = used;
        answer["store_bytes"] = used / 4;
        answer["saved"] = used - used / 4;
    }
    if (_settings.value("update_pending", false) && !state.value("updated", false)) {
        answer["update_pending"] = true;
    }
    std::cout << answer.dump() << '\n';
    return 0;
}

int PretendDrive::check()
{
    const json state = load();
    const auto failing = _settings.value("failing", Arguments{});
    const auto pause = std::chrono::milliseconds(_settings.value("check_pause", 400));

    struct Row {
        const char* id;
        const char* title;
        bool good;
        const char* detail;
        const char* fix;
        const char* action;
    };

    const std::array<Row, 4> rows{{
        {"running", "Ferrobank is running", isServing(state), "The drive is not being served.",
         "Restart Ferrobank.", "restart"},
        {"drive", "Drive is mounted and writable", isMounted(state), "The drive is not mounted.",
         "Restart Ferrobank.", "restart"},
        {"login", "Starts at login", state.value("installed", false), "Ferrobank does not start at login.",
         "Turn on Ferrobank in Login Items.", "login-items"},
        {"space", "Room on this computer", true, "The disk is almost full.", "Free some space.",
         "storage-settings"},
    }};
    for (const Row& row : rows) {
        std::cout << json{{"id", row.id}, {"title", row.title}, {"state", "running"}}.dump() << std::endl;
        std::this_thread::sleep_for(pause);
        const bool good = row.good && std::find(failing.begin(), failing.end(), row.id) == failing.end();
        json result{{"id", row.id}, {"title", row.title}, {"state", good ? "pass" : "fail"}};
        if (!good) {
            result.update({{"detail", row.detail}, {"fix", row.fix}, {"action", row.action}});
        }
        std::cout << result.dump() << std::endl;
    }
    return 0;
}

int PretendDrive::serve()
{
    sigset_t ending;
    ::sigemptyset(&ending);
    ::sigaddset(&ending, SIGTERM);
    ::sigaddset(&ending, SIGINT);
    ::sigprocmask(SIG_BLOCK, &ending, nullptr);

    std::filesystem::create_directories(_support / "store");
    json state = load();
    state["installed"] = true;
    state["serving"] = ::getpid();
    attach(state);
    save(state);
    note("serving");
    ::sigwaitinfo(&ending, nullptr);
    state = load();
    if (state.value("serving", 0) == ::getpid()) {
        state.erase("serving");
        save(state);
    }
    note("stopped");
    return 0;
}

int PretendDrive::restart(bool keepMounted)
{
    json state = load();
    if (!isServing(state)) {
        std::cerr << "Ferrobank is not running.\n";
        return 1;
    }
    if (keepMounted) {
        state["updated"] = true;
    } else {
        attach(state);
    }
    save(state);
    note(keepMounted ? "restarted, kept mounted" : "restarted");
    return 0;
}

int PretendDrive::uninstall(const Arguments& arguments)
{
    if (const auto words = _settings.value("uninstall_error", std::string()); !words.empty()) {
        std::cerr << words << '\n';
        return 1;
    }
    const json state = load();
    const auto exporting = std::find(arguments.begin(), arguments.end(), "--export");
    if (exporting != arguments.end() && exporting + 1 != arguments.end()) {
        const std::filesystem::path destination = *(exporting + 1);
        std::filesystem::create_directories(destination);
        if (std::filesystem::exists(_home / "Ferrobank")) {
            std::filesystem::copy(_home / "Ferrobank", destination, std::filesystem::copy_options::recursive);
        }
    }
    stopUnit();
    if (isServing(state)) {
        ::kill(state.value("serving", 0), SIGTERM);
    }
    save(json::object());
    note("uninstalled");
    if (std::find(arguments.begin(), arguments.end(), "--delete-store") != arguments.end()) {
        std::filesystem::remove_all(_support / "store");
    }
    return 0;
}

json PretendDrive::load() const
{
    std::ifstream stream(_support / "pretend-drive.json");
    const json state = json::parse(stream, nullptr, false);
    return state.is_object() ? state : json::object();
}

void PretendDrive::save(const json& state) const
{
    std::filesystem::create_directories(_support);
    const auto file = _support / "pretend-drive.json";
    auto fresh = file;
    fresh += '.' + std::to_string(::getpid());
    std::ofstream(fresh) << state.dump(2) << '\n';
    std::filesystem::rename(fresh, file);
}

void PretendDrive::note(const std::string& words) const
{
    std::ofstream(_support / "ferrobank.log", std::ios::app)
        << static_cast<std::int64_t>(now()) << ' ' << words << '\n';
}

} // namespace scripted
