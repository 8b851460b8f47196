#include "mounting/MountTable.h"

#include "platform/Failure.h"
#include "platform/Files.h"

#include <algorithm>
#include <optional>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kTableLimit = 16 * 1024 * 1024;

bool isOctal(char digit)
{
    return digit >= '0' && digit <= '7';
}

std::vector<std::string_view> split(std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    while (true) {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

bool holdsReadOnly(std::string_view options)
{
    const auto words = split(options, ',');
    return std::find(words.begin(), words.end(), "ro") != words.end();
}

} // namespace

std::string withoutEscapes(std::string_view text)
{
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\\' && at + 3 < text.size() && isOctal(text[at + 1]) && isOctal(text[at + 2]) &&
            isOctal(text[at + 3]))
        {
            plain += static_cast<char>((text[at + 1] - '0') * 64 + (text[at + 2] - '0') * 8 +
                                       (text[at + 3] - '0'));
            at += 3;
        } else {
            plain += text[at];
        }
    }
    return plain;
}

std::vector<MountEntry> parseMountTable(std::string_view text)
{
    std::vector<MountEntry> entries;
    for (const std::string_view line : split(text, '\n')) {
        const auto fields = split(line, ' ');
        const auto dash = std::find(fields.begin(), fields.end(), "-");
        if (dash - fields.begin() < 6 || fields.end() - dash < 4) {
            continue;
        }
        MountEntry entry;
        entry.root = withoutEscapes(fields[3]);
        entry.mountPoint = withoutEscapes(fields[4]);
        entry.fileSystem = dash[1];
        entry.source = withoutEscapes(dash[2]);
        entry.readOnly = holdsReadOnly(fields[5]) || holdsReadOnly(dash[3]);
        entries.push_back(std::move(entry));
    }
    return entries;
}

std::vector<MountEntry> readMountTable()
{
    const std::optional<std::string> text = readSmallFile("/proc/self/mountinfo", kTableLimit);
    if (!text) {
        throw Failure("Cannot read what is mounted on this computer.");
    }
    return parseMountTable(*text);
}

} // namespace ferrobank::drive
