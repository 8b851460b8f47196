#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace scripted {

using Arguments = std::vector<std::string>;

/// What the tool was told to do, and where it notes what it was asked. README.md describes the file.
class Scenario {
public:
    /// $FERROBANK_SCENARIO, or else "<executable>.scenario", or else ~/.ferrobank-scenario. Without any of
    /// them everything is left to the pretend drive, and nothing is recorded. Throws on a broken file.
    static Scenario find();

    /// Notes the run and gives the steps to play; none when no rule fits.
    [[nodiscard]] const nlohmann::json* answer(const Arguments& arguments) const;

    /// Settings of the pretend drive, an object.
    [[nodiscard]] nlohmann::json drive() const { return _document.value("drive", nlohmann::json::object()); }

private:
    Scenario() = default;

    /// Appends a line to the record; the result is how often the rule was used before.
    [[nodiscard]] std::size_t record(const Arguments& arguments, int rule) const;

    nlohmann::json _document = nlohmann::json::object();
    std::filesystem::path _record;
};

} // namespace scripted
