#include "mounting/OldFstabLines.h"

#include "mounting/MountTable.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace ferrobank::drive {

namespace {

constexpr std::string_view kImageBelowHome = "/Library/Application Support/Ferrobank/store/drive.btrfs";
constexpr std::string_view kDriveBelowHome = "/Ferrobank";
constexpr std::string_view kMark = "# Ferrobank drive of user ";

/// With their line breaks, so that put together they are the text again.
std::vector<std::string_view> linesOf(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::size_t length = end == std::string_view::npos ? text.size() : end + 1;
        lines.push_back(text.substr(0, length));
        text.remove_prefix(length);
    }
    return lines;
}

std::string_view withoutBreak(std::string_view line)
{
    return line.ends_with('\n') ? line.substr(0, line.size() - 1) : line;
}

std::vector<std::string_view> fieldsOf(std::string_view line)
{
    constexpr std::string_view kBlank = " \t";
    std::vector<std::string_view> fields;
    while (true) {
        const std::size_t start = line.find_first_not_of(kBlank);
        if (start == std::string_view::npos) {
            return fields;
        }
        line.remove_prefix(start);
        const std::size_t length = std::min(line.find_first_of(kBlank), line.size());
        fields.push_back(line.substr(0, length));
        line.remove_prefix(length);
    }
}

bool hasOption(std::string_view options, std::string_view wanted)
{
    while (true) {
        const std::size_t end = options.find(',');
        if (options.substr(0, end) == wanted) {
            return true;
        }
        if (end == std::string_view::npos) {
            return false;
        }
        options.remove_prefix(end + 1);
    }
}

std::optional<std::filesystem::path> imageIn(std::string_view line)
{
    const std::vector<std::string_view> fields = fieldsOf(withoutBreak(line));
    if (fields.size() < 4 || fields[0].starts_with('#')) {
        return std::nullopt;
    }
    std::string image = withoutEscapes(fields[0]);
    if (!image.starts_with('/') || !image.ends_with(kImageBelowHome)) {
        return std::nullopt;
    }
    const std::string home = image.substr(0, image.size() - kImageBelowHome.size());
    const bool anyoneMounts = hasOption(fields[3], "user") || hasOption(fields[3], "users");
    if (withoutEscapes(fields[1]) != home + std::string(kDriveBelowHome) || fields[2] != "btrfs" ||
        !hasOption(fields[3], "loop") || !anyoneMounts)
    {
        return std::nullopt;
    }
    return image;
}

std::optional<uid_t> userIn(std::string_view line, std::string_view word)
{
    line = withoutBreak(line);
    if (!line.starts_with(kMark) || !line.ends_with(word)) {
        return std::nullopt;
    }
    line.remove_prefix(kMark.size());
    line.remove_suffix(std::min(word.size(), line.size()));
    uid_t user = 0;
    const auto parsed = std::from_chars(line.data(), line.data() + line.size(), user);
    if (line.empty() || parsed.ec != std::errc() || parsed.ptr != line.data() + line.size()) {
        return std::nullopt;
    }
    return user;
}

/// Calls `found` with each line of ours and the numbers of its first and last line, comments included.
template <typename Found>
void forEachOldLine(const std::vector<std::string_view>& lines, const Found& found)
{
    for (std::size_t at = 0; at < lines.size(); ++at) {
        const std::optional<std::filesystem::path> image = imageIn(lines[at]);
        if (!image) {
            continue;
        }
        const std::optional<uid_t> before = at > 0 ? userIn(lines[at - 1], ": begin") : std::nullopt;
        const std::optional<uid_t> after =
            at + 1 < lines.size() ? userIn(lines[at + 1], ": end") : std::nullopt;
        found(OldFstabLine{.user = before == after ? before : std::nullopt, .image = *image},
              at - (before ? 1 : 0), at + (after ? 1 : 0));
    }
}

} // namespace

std::vector<OldFstabLine> oldFstabLines(const std::string& text)
{
    std::vector<OldFstabLine> all;
    forEachOldLine(linesOf(text),
                   [&](const OldFstabLine& line, std::size_t, std::size_t) { all.push_back(line); });
    return all;
}

std::string withoutOldFstabLines(const std::string& text,
                                 const std::function<bool(const OldFstabLine&)>& isMeant)
{
    const std::vector<std::string_view> lines = linesOf(text);
    std::vector<bool> goes(lines.size(), false);
    forEachOldLine(lines, [&](const OldFstabLine& line, std::size_t first, std::size_t last) {
        if (isMeant(line)) {
            std::fill(goes.begin() + static_cast<std::ptrdiff_t>(first),
                      goes.begin() + static_cast<std::ptrdiff_t>(last) + 1, true);
        }
    });
    std::string left;
    for (std::size_t at = 0; at < lines.size(); ++at) {
        if (!goes[at]) {
            left += lines[at];
        }
    }
    return left;
}

} // namespace ferrobank::drive
