#include "commands/CheckRow.h"

#include "commands/Words.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace ferrobank::drive {

namespace {

const char* word(CheckRow::State state)
{
    switch (state) {
    case CheckRow::State::Running:
        return "running";
    case CheckRow::State::Pass:
        return "pass";
    case CheckRow::State::Fail:
        return "fail";
    }
    return "";
}

/// The application has a button for each remedy; at a terminal it is a command.
std::optional<std::string> adviceForPeople(const CheckRow& row)
{
    if (row.action == "restart" && row.fix == kRestartAdvice) {
        return "Run: ferrobank restart";
    }
    if (row.action == "login-items") {
        return "Turn it on in the Ferrobank application.";
    }
    return row.fix;
}

} // namespace

std::string CheckRow::toJson() const
{
    nlohmann::ordered_json root;
    root["id"] = id;
    root["title"] = title;
    root["state"] = word(state);
    const auto add = [&root](const char* key, const std::optional<std::string>& value) {
        if (value) {
            root[key] = *value;
        }
    };
    add("detail", detail);
    add("fix", fix);
    add("action", action);
    return root.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

std::string CheckRow::toText(bool colours) const
{
    const bool good = state == State::Pass;
    std::string text = toned(good ? "passed  " : "failed  ", good ? Tone::Good : Tone::Bad, colours) + title;
    for (const std::optional<std::string>& more : {detail, adviceForPeople(*this)}) {
        if (more) {
            text += "\n        " + toned(*more, Tone::Quiet, colours);
        }
    }
    return text;
}

CheckRow CheckRow::passed(std::optional<std::string> words) const
{
    CheckRow result = *this;
    result.state = State::Pass;
    result.detail = std::move(words);
    return result;
}

CheckRow CheckRow::failed(std::string words, std::string advice, std::optional<std::string> remedy) const
{
    CheckRow result = *this;
    result.state = State::Fail;
    result.detail = std::move(words);
    result.fix = std::move(advice);
    result.action = std::move(remedy);
    return result;
}

} // namespace ferrobank::drive
