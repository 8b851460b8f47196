#include "words/Sentences.h"

#include "words/Language.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <optional>

namespace ferrobank {

namespace {

constexpr std::string_view kPlace = "{}";
/// A catalogue has a few tens of kilobytes.
constexpr std::size_t kLimit = std::size_t{1} << 20;

std::vector<std::string> piecesOf(std::string_view pattern)
{
    std::vector<std::string> pieces;
    std::size_t begin = 0;
    for (std::size_t place = pattern.find(kPlace); place != std::string_view::npos;
         place = pattern.find(kPlace, begin))
    {
        pieces.emplace_back(pattern.substr(begin, place - begin));
        begin = place + kPlace.size();
    }
    pieces.emplace_back(pattern.substr(begin));
    return pieces;
}

/// What stands in the places, or nothing if the text is another one. A place is never empty, and as short as
/// it can be but the last.
std::optional<std::vector<std::string_view>> valuesIn(std::string_view text,
                                                      const std::vector<std::string>& pieces)
{
    if (!text.starts_with(pieces.front())) {
        return std::nullopt;
    }
    if (pieces.size() == 1) {
        return text == pieces.front() ? std::optional(std::vector<std::string_view>()) : std::nullopt;
    }
    std::vector<std::string_view> values;
    std::size_t begin = pieces.front().size();
    for (std::size_t index = 1; index + 1 < pieces.size(); ++index) {
        const std::size_t end = text.find(pieces[index], begin + 1);
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        values.push_back(text.substr(begin, end - begin));
        begin = end + pieces[index].size();
    }
    const std::string& last = pieces.back();
    if (text.size() < begin + last.size() + 1 || !text.ends_with(last)) {
        return std::nullopt;
    }
    values.push_back(text.substr(begin, text.size() - begin - last.size()));
    return values;
}

/// The words with the values in their places; nothing if the words have a place that there is no value for.
std::optional<std::string> filled(std::string_view words, const std::vector<std::string_view>& values)
{
    std::string text;
    std::size_t next = 0;
    while (!words.empty()) {
        const std::size_t open = words.find('{');
        const std::size_t close = open == std::string_view::npos ? open : words.find('}', open);
        if (close == std::string_view::npos) {
            return text.append(words);
        }
        text.append(words.substr(0, open));
        const std::string_view number = words.substr(open + 1, close - open - 1);
        std::size_t index = ++next;
        if (!number.empty()) {
            const auto [rest, error] = std::from_chars(number.begin(), number.end(), index);
            if (error != std::errc() || rest != number.end()) {
                return std::nullopt;
            }
        }
        if (index == 0 || index > values.size()) {
            return std::nullopt;
        }
        text.append(values[index - 1]);
        words.remove_prefix(close + 1);
    }
    return text;
}

} // namespace

Sentences Sentences::fromFile(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(stream), {});
    return text.size() > kLimit ? Sentences() : fromText(text);
}

Sentences Sentences::fromText(std::string_view text)
{
    Sentences sentences;
    std::string_view pattern;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.empty() || line.front() == '#') {
            continue;
        }
        if (pattern.empty()) {
            pattern = line;
        } else {
            sentences.add(pattern, line);
            pattern = {};
        }
    }
    return sentences;
}

Sentences Sentences::ofTheUser(const std::filesystem::path& folder)
{
    const std::string language = chosenLanguage(wantedLanguages());
    return language.empty() ? Sentences() : fromFile(folder / ("sentences_" + language + ".txt"));
}

void Sentences::add(std::string_view pattern, std::string_view words)
{
    Entry entry{.pieces = piecesOf(pattern), .words = std::string(words)};
    for (const std::string& piece : entry.pieces) {
        entry.letters += piece.size();
    }
    const std::vector<std::string_view> places(entry.pieces.size() - 1, "x");
    if (filled(words, places)) {
        _entries.push_back(std::move(entry));
    }
}

bool Sentences::sayWhole(std::string_view english, std::string& said) const
{
    const Entry* best = nullptr;
    std::vector<std::string_view> values;
    for (const Entry& entry : _entries) {
        if (best != nullptr && entry.letters <= best->letters) {
            continue;
        }
        if (auto found = valuesIn(english, entry.pieces)) {
            best = &entry;
            values = std::move(*found);
        }
    }
    if (best == nullptr) {
        return false;
    }
    said.append(*filled(best->words, values));
    return true;
}

std::string Sentences::say(std::string_view english) const
{
    std::string said;
    if (_entries.empty() || sayWhole(english, said)) {
        return said.empty() ? std::string(english) : said;
    }
    // One by one. What looks like an end within a sentence, in a name, say, does no harm: it stays as it was.
    while (!english.empty()) {
        std::size_t end = english.find(". ");
        end = end == std::string_view::npos ? english.size() : end + 1;
        const std::string_view sentence = english.substr(0, end);
        if (!sayWhole(sentence, said)) {
            said.append(sentence);
        }
        english.remove_prefix(end);
        if (!english.empty()) {
            said.push_back(' ');
            english.remove_prefix(1);
        }
    }
    return said;
}

} // namespace ferrobank
