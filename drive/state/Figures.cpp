#include "state/Figures.h"

#include "platform/Files.h"

#include <nlohmann/json.hpp>

namespace ferrobank::drive {

using nlohmann::json;

std::optional<Figures> Figures::read(const std::filesystem::path& file)
{
    const std::optional<std::string> text = readSmallFile(file);
    if (!text) {
        return std::nullopt;
    }
    try {
        const json root = json::parse(*text);
        Figures figures;
        root.at("uuid").get_to(figures.uuid);
        if (const json& used = root.at("volume_used"); !used.is_null()) {
            figures.volumeUsed = used.get<std::uint64_t>();
        }
        if (const json& saved = root.at("saved"); !saved.is_null()) {
            figures.saved = saved.get<std::uint64_t>();
        }
        root.at("walk_generation").get_to(figures.walkGeneration);
        root.at("guard").get_to(figures.guard);
        root.at("since").get_to(figures.since);
        root.at("last_reading").get_to(figures.lastReading);
        root.at("last_sharing").get_to(figures.lastSharing);
        root.at("unreadable_files").get_to(figures.unreadableFiles);
        root.at("unreadable").get_to(figures.unreadable);
        figures.generation = root.value("generation", std::uint64_t{0});
        figures.sharingPaused = root.value("sharing_paused", false);
        figures.settledErrors = root.value("settled_errors", std::uint64_t{0});
        figures.olderImage = root.value("older_image", false);
        return figures;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

void Figures::write(const std::filesystem::path& file) const
{
    json root;
    root["v"] = 1;
    root["uuid"] = uuid;
    root["volume_used"] = volumeUsed ? json(*volumeUsed) : json(nullptr);
    root["saved"] = saved ? json(*saved) : json(nullptr);
    root["walk_generation"] = walkGeneration;
    root["guard"] = guard;
    root["since"] = since;
    root["last_reading"] = lastReading;
    root["last_sharing"] = lastSharing;
    root["unreadable_files"] = unreadableFiles;
    root["unreadable"] = unreadable;
    root["generation"] = generation;
    root["sharing_paused"] = sharingPaused;
    root["settled_errors"] = settledErrors;
    root["older_image"] = olderImage;
    replaceFile(file, root.dump(-1, ' ', false, json::error_handler_t::replace), Durability::Synced);
}

} // namespace ferrobank::drive
