#include "Platform/linux/login/GroupedKeys.h"

#include <cstddef>

namespace ferrobank {

namespace {

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view kWhite = " \t\r";
    const std::size_t first = text.find_first_not_of(kWhite);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kWhite) - first + 1);
}

} // namespace

GroupedKeys::GroupedKeys(std::string_view text)
{
    std::string group;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string_view line = trimmed(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.starts_with('[') && line.ends_with(']')) {
            group = line.substr(1, line.size() - 2);
            continue;
        }
        const std::size_t equals = line.find('=');
        if (line.starts_with('#') || line.starts_with(';') || equals == std::string_view::npos) {
            continue;
        }
        _values[{group, std::string(trimmed(line.substr(0, equals)))}] = trimmed(line.substr(equals + 1));
    }
}

std::optional<std::string> GroupedKeys::value(std::string_view group, std::string_view key) const
{
    const auto found = _values.find({std::string(group), std::string(key)});
    return found == _values.end() ? std::nullopt : std::optional(found->second);
}

} // namespace ferrobank
