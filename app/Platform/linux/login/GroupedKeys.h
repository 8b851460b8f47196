#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace ferrobank {

/// The "key=value" lines of a text with "[group]" lines, as unit files and desktop entries are written. Plain
/// value. Values are as they stand in the text, with the white space around them removed; of a key that
/// occurs twice the last value counts; what is neither is skipped.
class GroupedKeys {
public:
    explicit GroupedKeys(std::string_view text);

    [[nodiscard]] std::optional<std::string> value(std::string_view group, std::string_view key) const;

private:
    std::map<std::pair<std::string, std::string>, std::string> _values;
};

} // namespace ferrobank
