#include "state/State.h"

#include <algorithm>
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
constexpr std::array<std::pair<SharingWait, const char*>, 6> kWaits{{{SharingWait::Changes, "changes"},
                                                                     {SharingWait::Quiet, "quiet"},
                                                                     {SharingWait::Load, "load"},
                                                                     {SharingWait::Power, "power"},
                                                                     {SharingWait::Resume, "resume"},
                                                                     {SharingWait::Export, "export"}}};
constexpr std::array<std::pair<ReadingReason, const char*>, 5> kReasons{
    {{ReadingReason::None, "none"},
     {ReadingReason::CutShort, "cut-short"},
     {ReadingReason::LostChanges, "lost-changes"},
     {ReadingReason::DeviceErrors, "device-errors"},
     {ReadingReason::Superblock, "superblock"}}};

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

json progressOrNull(const std::optional<WorkProgress>& progress)
{
    return progress ? json{{"done", progress->done}, {"total", progress->total}} : json(nullptr);
}

/// What came to the format later is absent in the state of a process that was started before an update.
std::optional<WorkProgress> progressAt(const json& object, const char* key)
{
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) {
        return std::nullopt;
    }
    return WorkProgress{.done = found->at("done"), .total = found->at("total")};
}

SharingState decodeSharing(const json& object)
{
    return {.last = object.at("last"),
            .seconds = object.at("seconds"),
            .shared = object.at("shared"),
            .error = optionalAt<std::string>(object, "error"),
            .paused = object.value("paused", false),
            .waitsFor = valueOf(kWaits, object.value("waits_for", std::string("quiet"))),
            .running = progressAt(object, "running"),
            .askedPasses = object.value("asked_passes", std::uint64_t{0})};
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
    state.sharing = decodeSharing(root.at("dedup"));
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
    state.integrity.settledErrors = integrity.value("settled_errors", std::uint64_t{0});
    state.integrity.readingDue = reasonOf(integrity.value("reading_due", std::string()));
    state.integrity.reading = progressAt(integrity, "reading");
    state.integrity.olderImage = integrity.value("older_image", false);
    root.at("readonly").get_to(state.readOnly);
    if (const json& progress = root.at("export"); !progress.is_null()) {
        state.exportState = ExportState{.done = progress.at("done"), .total = progress.at("total")};
    }
    return state;
}

} // namespace

void IntegrityState::setUnreadable(std::uint64_t files, std::vector<std::string> names)
{
    constexpr std::size_t kNamed = 3;
    unreadableFiles = files;
    unreadable = std::move(names);
    unreadable.resize(std::min(unreadable.size(), kNamed));
}

std::string phaseWord(Phase phase)
{
    return wordOf(kPhases, phase);
}

std::string reasonWord(ReadingReason reason)
{
    return wordOf(kReasons, reason);
}

ReadingReason reasonOf(const std::string& word)
{
    for (const auto& [reason, text] : kReasons) {
        if (word == text) {
            return reason;
        }
    }
    return ReadingReason::None;
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
                     {"error", orNull(sharing.error)},
                     {"paused", sharing.paused},
                     {"waits_for", wordOf(kWaits, sharing.waitsFor)},
                     {"running", progressOrNull(sharing.running)},
                     {"asked_passes", sharing.askedPasses}};
    root["space"] = {{"host_free", space.hostFree},
                     {"reserve", space.reserve},
                     {"guard", space.guard},
                     {"level", wordOf(kLevels, space.level)}};
    root["integrity"] = {
        {"device_errors", integrity.deviceErrors},      {"unreadable_files", integrity.unreadableFiles},
        {"unreadable", integrity.unreadable},           {"last_reading", integrity.lastReading},
        {"settled_errors", integrity.settledErrors},    {"reading_due", reasonWord(integrity.readingDue)},
        {"reading", progressOrNull(integrity.reading)}, {"older_image", integrity.olderImage}};
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
