#include "state/ServerProbe.h"

#include "platform/FileLock.h"

#include <charconv>

namespace ferrobank::drive {

std::string LockText::toText() const
{
    return std::to_string(process) + " " + runtime.string();
}

std::optional<LockText> LockText::fromText(const std::string& text)
{
    LockText found;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, found.process);
    if (error != std::errc() || end - rest < 2 || rest[0] != ' ' || rest[1] != '/') {
        return std::nullopt;
    }
    found.runtime = std::string(rest + 1, end);
    return found;
}

bool LockText::isAlive() const
{
    const std::optional<std::string> facts = readSmallFile("/proc/" + std::to_string(process) + "/stat");
    if (!facts) {
        return false;
    }
    // The state follows the name, which may hold anything, brackets too.
    const std::size_t name = facts->rfind(") ");
    const char state = name == std::string::npos ? 'X' : (*facts)[name + 2];
    return state != 'Z' && state != 'X';
}

ServerProbe ServerProbe::probe(const Paths& paths)
{
    ServerProbe probe;
    probe.runtime = paths.runtime;
    probe.running = FileLock::isHeld(paths.storeLock);
    if (!probe.running) {
        return probe;
    }
    if (const std::optional<LockText> holder =
            LockText::fromText(readSmallFile(paths.storeLock).value_or(std::string())))
    {
        probe.running = holder->isAlive();
        probe.process = holder->process;
        probe.runtime = holder->runtime;
    }
    if (const std::optional<std::string> text = readSmallFile(probe.runtime / "state.json")) {
        probe.state = State::fromJson(*text);
    }
    if (probe.state && probe.state->process != probe.process) {
        probe.state.reset();
    }
    return probe;
}

} // namespace ferrobank::drive
