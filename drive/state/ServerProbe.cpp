#include "state/ServerProbe.h"

#include "platform/FileLock.h"

#include <sstream>

namespace ferrobank::drive {

namespace {

struct ProcessFacts {
    char state = 'X';
    std::uint64_t start = 0;
};

/// From /proc/PROCESS/stat, see proc(5): the state is its third field, the start its twenty-second.
std::optional<ProcessFacts> factsOf(int process)
{
    const std::optional<std::string> text = readSmallFile("/proc/" + std::to_string(process) + "/stat");
    // The fields follow the name, which may hold anything, brackets too.
    const std::size_t name = text ? text->rfind(") ") : std::string::npos;
    if (name == std::string::npos) {
        return std::nullopt;
    }
    std::istringstream fields(text->substr(name + 2));
    ProcessFacts facts;
    fields >> facts.state;
    std::string passedOver;
    for (int field = 4; field < 22; ++field) {
        fields >> passedOver;
    }
    fields >> facts.start;
    return fields ? std::optional(facts) : std::nullopt;
}

} // namespace

LockText LockText::of(int process, const std::filesystem::path& runtime)
{
    return {.process = process,
            .start = factsOf(process).value_or(ProcessFacts()).start,
            .bootId = drive::bootId(),
            .runtime = runtime};
}

std::string LockText::toText() const
{
    return std::to_string(process) + " " + std::to_string(start) + " " + bootId + " " + runtime.string();
}

std::optional<LockText> LockText::fromText(const std::string& text)
{
    LockText found;
    std::istringstream fields(text);
    if (!(fields >> found.process >> found.start >> found.bootId) || fields.get() != ' ' ||
        fields.peek() != '/')
    {
        return std::nullopt;
    }
    found.runtime = text.substr(static_cast<std::size_t>(fields.tellg()));
    return found;
}

bool LockText::isAlive() const
{
    const std::optional<ProcessFacts> facts = factsOf(process);
    return facts && facts->state != 'Z' && facts->state != 'X' && facts->start == start &&
           bootId == drive::bootId();
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
