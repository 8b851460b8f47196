#include "control/Message.h"

#include <array>
#include <nlohmann/json.hpp>
#include <utility>

namespace ferrobank::drive {

namespace {

using nlohmann::json;

constexpr std::array<std::pair<Operation, const char*>, 13> kWords{{{Operation::Ping, "ping"},
                                                                    {Operation::Attach, "attach"},
                                                                    {Operation::Restart, "restart"},
                                                                    {Operation::Reexec, "reexec"},
                                                                    {Operation::PauseDedup, "pause-dedup"},
                                                                    {Operation::ShareNow, "share-now"},
                                                                    {Operation::HoldSharing, "hold-sharing"},
                                                                    {Operation::Resume, "resume-sharing"},
                                                                    {Operation::FilesRead, "files-read"},
                                                                    {Operation::Replaced, "files-replaced"},
                                                                    {Operation::Accept, "accept"},
                                                                    {Operation::Stop, "stop"},
                                                                    {Operation::Quit, "quit"}}};

} // namespace

std::string Request::toLine() const
{
    json root;
    for (const auto& [value, word] : kWords) {
        if (value == operation) {
            root["op"] = word;
        }
    }
    if (operation == Operation::PauseDedup || operation == Operation::FilesRead ||
        operation == Operation::Replaced)
    {
        root["done"] = done;
        root["total"] = total;
    }
    return root.dump() + "\n";
}

std::optional<Request> Request::fromLine(const std::string& line)
{
    try {
        const json root = json::parse(line);
        const std::string word = root.at("op");
        for (const auto& [value, text] : kWords) {
            if (word == text) {
                return Request{.operation = value,
                               .done = root.value("done", std::uint64_t{0}),
                               .total = root.value("total", std::uint64_t{0})};
            }
        }
    } catch (const std::exception&) {
        return std::nullopt;
    }
    return std::nullopt;
}

std::string Reply::toLine() const
{
    json root;
    root["ok"] = ok;
    if (!ok) {
        root["code"] = code;
        root["text"] = text;
    }
    return root.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
}

std::optional<Reply> Reply::fromLine(const std::string& line)
{
    try {
        const json root = json::parse(line);
        return Reply{.ok = root.at("ok"),
                     .code = root.value("code", std::string()),
                     .text = root.value("text", std::string())};
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace ferrobank::drive
