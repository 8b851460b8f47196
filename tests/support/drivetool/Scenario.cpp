#include "Scenario.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <system_error>

namespace scripted {

namespace {

std::optional<std::filesystem::path> scenarioFile()
{
    if (const char* named = std::getenv("FERROBANK_SCENARIO")) {
        return named;
    }
    std::vector<std::filesystem::path> candidates{std::filesystem::read_symlink("/proc/self/exe")};
    candidates.front() += ".scenario";
    if (const char* home = std::getenv("HOME")) {
        candidates.push_back(std::filesystem::path(home) / ".ferrobank-scenario");
    }
    for (const auto& candidate : candidates) {
        if (std::filesystem::exists(candidate)) {
            return candidate;
        }
    }
    return std::nullopt;
}

bool fits(const nlohmann::json& rule, const Arguments& arguments)
{
    auto wanted = rule.value("args", Arguments{"*"});
    if (!wanted.empty() && wanted.back() == "*") {
        wanted.pop_back();
        return wanted.size() <= arguments.size() &&
               std::equal(wanted.begin(), wanted.end(), arguments.begin());
    }
    return wanted == arguments;
}

} // namespace

Scenario Scenario::find()
{
    Scenario scenario;
    if (const auto file = scenarioFile()) {
        std::ifstream stream(*file);
        scenario._document = nlohmann::json::parse(stream);
        std::filesystem::path beside = *file;
        beside += ".runs";
        scenario._record = scenario._document.value("record", beside.string());
    }
    return scenario;
}

const nlohmann::json* Scenario::answer(const Arguments& arguments) const
{
    static const nlohmann::json kNone = nlohmann::json::array();
    const auto rules = _document.find("runs");
    const nlohmann::json& list = rules == _document.end() ? kNone : *rules;
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (fits(list[i], arguments)) {
            const std::size_t before = record(arguments, static_cast<int>(i));
            if (const auto answers = list[i].find("answers"); answers != list[i].end()) {
                return &answers->at(std::min(before, answers->size() - 1));
            }
            return &list[i].at("play");
        }
    }
    static_cast<void>(record(arguments, -1));
    return nullptr;
}

std::size_t Scenario::record(const Arguments& arguments, int rule) const
{
    if (_record.empty()) {
        return 0;
    }
    const int file = ::open(_record.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (file < 0) {
        throw std::system_error(errno, std::generic_category(), _record.string());
    }
    ::flock(file, LOCK_EX);
    std::size_t before = 0;
    {
        std::ifstream earlier(_record);
        for (std::string line; std::getline(earlier, line);) {
            before += nlohmann::json::parse(line).at("rule") == rule ? 1 : 0;
        }
    }
    const nlohmann::json entry{{"args", arguments}, {"rule", rule}, {"pid", ::getpid()}};
    const std::string line = entry.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
    const bool written = ::write(file, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    ::close(file);
    if (!written) {
        throw std::runtime_error("cannot write " + _record.string());
    }
    return before;
}

} // namespace scripted
