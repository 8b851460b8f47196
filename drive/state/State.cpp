#include "state/State.h"

#include <array>
#include <nlohmann/json.hpp>
#include <utility>

namespace ferrobank::drive {

namespace {

using nlohmann::json;

constexpr int kFormat = 1;

constexpr std::array<std::pair<Phase, const char*>, 4> kPhases{{{Phase::Starting, "starting"},
                                                                {Phase::Mounted, "mounted"},
                                                                {Phase::Stopping, "stopping"},
                                                                {Phase::Failed, "failed"}}};
constexpr std::array<std::pair<SpaceLevel, const char*>, 3> kLevels{
    {{SpaceLevel::Ok, "ok"}, {SpaceLevel::Low, "low"}, {SpaceLevel::Critical, "critical"}}};

template <typename Table, typename Value>
std::string wordOf(const Table& table, Value value)
{
    for (const auto& [entry, word] : table) {
        if (entry == value) {
            return word;
        }
    }
    return {};
}

template <typename Table>
auto valueOf(const Table& table, const std::string& word)
{
    for (const auto& [entry, text] : table) {
        if (word == text) {
            return entry;
        }
    }
    throw std::invalid_argument("unknown word " + word);
}

template <typename Value>
json orNull(const std::optional<Value>& value)
{
    return value ? json(*value) : json(nullptr);
}

template <typename Value>
std::optional<Value> optionalAt(const json& object, const char* key)
{
    const json& value = object.at(key);
    return value.is_null() ? std::nullopt : std::optional<Value>(value.get<Value>());
}

State decode(const json& root)
{
    if (root.at("v") != kFormat) {
        throw std::invalid_argument("unknown format");
    }
    State state;
    root.at("pid").get_to(state.process);
    root.at("boot_id").get_to(state.bootId);
    root.at("version").get_to(state.version);
    root.at("exe_path").get_to(state.executablePath);
    const json& executable = root.at("exe");
    state.executable = {.device = executable.at(0), .inode = executable.at(1), .modified = executable.at(2)};
    state.phase = valueOf(kPhases, root.at("phase"));
    root.at("backend").get_to(state.backEnd);
    root.at("loop").get_to(state.loop);
    root.at("mount").get_to(state.mount);
    root.at("uuid").get_to(state.uuid);
    if (const json& problem = root.at("attach_error"); !problem.is_null()) {
        state.attachError = Problem{.code = problem.at("code"), .text = problem.at("text")};
    }
    state.volumeUsed = optionalAt<std::uint64_t>(root, "volume_used");
    state.saved = optionalAt<std::uint64_t>(root, "saved");
    root.at("walk_generation").get_to(state.walkGeneration);
    root.at("since").get_to(state.since);
    const json& sharing = root.at("dedup");
    state.sharing = {.last = sharing.at("last"),
                     .seconds = sharing.at("seconds"),
                     .shared = sharing.at("shared"),
                     .error = optionalAt<std::string>(sharing, "error")};
    const json& space = root.at("space");
    state.space = {.hostFree = space.at("host_free"),
                   .reserve = space.at("reserve"),
                   .guard = space.at("guard"),
                   .level = valueOf(kLevels, space.at("level"))};
    const json& integrity = root.at("integrity");
    integrity.at("device_errors").get_to(state.integrity.deviceErrors);
    integrity.at("unreadable_files").get_to(state.integrity.unreadableFiles);
    integrity.at("unreadable").get_to(state.integrity.unreadable);
    integrity.at("last_reading").get_to(state.integrity.lastReading);
    root.at("readonly").get_to(state.readOnly);
    if (const json& progress = root.at("export"); !progress.is_null()) {
        state.exportState = ExportState{.done = progress.at("done"), .total = progress.at("total")};
    }
    return state;
}

} // namespace

std::string phaseWord(Phase phase)
{
    return wordOf(kPhases, phase);
}

std::string State::toJson() const
{
    json root;
    root["v"] = kFormat;
    root["pid"] = process;
    root["boot_id"] = bootId;
    root["version"] = version;
    root["exe_path"] = executablePath;
    root["exe"] = {executable.device, executable.inode, executable.modified};
    root["phase"] = phaseWord(phase);
    root["backend"] = backEnd;
    root["loop"] = loop;
    root["mount"] = mount;
    root["uuid"] = uuid;
    root["attach_error"] =
        attachError ? json{{"code", attachError->code}, {"text", attachError->text}} : json(nullptr);
    root["volume_used"] = orNull(volumeUsed);
    root["saved"] = orNull(saved);
    root["walk_generation"] = walkGeneration;
    root["since"] = since;
    root["dedup"] = {{"last", sharing.last},
                     {"seconds", sharing.seconds},
                     {"shared", sharing.shared},
                     {"error", orNull(sharing.error)}};
    root["space"] = {{"host_free", space.hostFree},
                     {"reserve", space.reserve},
                     {"guard", space.guard},
                     {"level", wordOf(kLevels, space.level)}};
    root["integrity"] = {{"device_errors", integrity.deviceErrors},
                         {"unreadable_files", integrity.unreadableFiles},
                         {"unreadable", integrity.unreadable},
                         {"last_reading", integrity.lastReading}};
    root["readonly"] = readOnly;
    root["export"] =
        exportState ? json{{"done", exportState->done}, {"total", exportState->total}} : json(nullptr);
    // Names of files are arbitrary bytes; a state that cannot be written would be worse than a replaced
    // letter.
    return root.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::optional<State> State::fromJson(const std::string& text)
{
    try {
        return decode(json::parse(text));
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace ferrobank::drive
