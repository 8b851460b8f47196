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
    // Beside a button that says the same, the words would only repeat it.
    if (!onlyNamesItsAction()) {
        add("fix", fix);
    }
    add("action", action);
    return root.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

std::string CheckRow::toText(bool colours) const
{
    const bool good = state == State::Pass;
    std::string text = toned(good ? "passed  " : "failed  ", good ? Tone::Good : Tone::Bad, colours) + title;
    for (const std::optional<std::string>& more : {detail, fix}) {
        if (more) {
            text += "\n        " + toned(*more, Tone::Quiet, colours);
        }
    }
    return text;
}

bool CheckRow::onlyNamesItsAction() const
{
    return action == "restart" && fix == kRestartAdvice;
}

CheckRow CheckRow::forTerminal() const
{
    CheckRow result = *this;
    if (action == "restart" && fix == kRestartAdvice) {
        result.fix = "Run: ferrobank restart";
    } else if (action == "login-items") {
        result.fix = "Turn it on in the Ferrobank application.";
    }
    return result;
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
