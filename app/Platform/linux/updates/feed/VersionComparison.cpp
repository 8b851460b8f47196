#include "Platform/linux/updates/feed/VersionComparison.h"

#include <algorithm>
#include <compare>
#include <vector>

namespace ferrobank::updates {
namespace {

/// In the order of age: what is listed first is older.
enum class Kind { String, End, Separator, Number };

struct Part {
    Kind kind;
    std::string_view text; ///< empty for separators, which are all alike; numbers without leading zeros
};

struct Version {
    std::vector<std::string_view> numbers; ///< "1.2." before anything else, without leading zeros
    std::vector<Part> rest;
};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isSeparator(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    const bool isLetter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte >= 0x80;
    return !isLetter && !isDigit(c);
}

template <typename Predicate>
std::string_view takeWhile(std::string_view& text, Predicate predicate)
{
    const auto end = std::ranges::find_if_not(text, predicate);
    const std::string_view taken = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(taken.size());
    return taken;
}

std::string_view takeNumber(std::string_view& text)
{
    std::string_view digits = takeWhile(text, isDigit);
    takeWhile(digits, [](char c) { return c == '0'; });
    return digits;
}

Version read(std::string_view text)
{
    text = text.substr(0, text.find('-'));
    Version version;
    while (!text.empty() && (isDigit(text.front()) || text.front() == '.')) {
        version.numbers.push_back(takeNumber(text));
        if (text.starts_with('.'))
            text.remove_prefix(1);
    }
    while (!text.empty()) {
        if (isDigit(text.front()))
            version.rest.push_back({Kind::Number, takeNumber(text)});
        else if (isSeparator(text.front())) {
            takeWhile(text, isSeparator);
            version.rest.push_back({Kind::Separator, {}});
        } else {
            const auto word = takeWhile(text, [](char c) { return !isDigit(c) && !isSeparator(c); });
            version.rest.push_back({Kind::String, word});
        }
    }
    return version;
}

std::weak_ordering compareNumbers(std::string_view left, std::string_view right)
{
    if (left.size() != right.size())
        return left.size() <=> right.size();
    return left.compare(right) <=> 0;
}

std::weak_ordering compareParts(const Part& left, const Part& right)
{
    if (left.kind != right.kind)
        return left.kind <=> right.kind;
    return left.kind == Kind::Number ? compareNumbers(left.text, right.text)
                                     : left.text.compare(right.text) <=> 0;
}

} // namespace

bool isUsableVersion(std::string_view text)
{
    constexpr std::size_t kLongest = 64;
    const auto isPlain = [](char c) {
        return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    };
    return !text.empty() && text.size() <= kLongest && isPlain(text.front()) &&
           std::ranges::all_of(text, [&](char c) {
               return isPlain(c) || std::string_view("._+-").find(c) != std::string_view::npos;
           });
}

int compareVersions(std::string_view left, std::string_view right)
{
    Version a = read(left);
    Version b = read(right);

    const std::size_t numbers = std::max(a.numbers.size(), b.numbers.size());
    a.numbers.resize(numbers);
    b.numbers.resize(numbers);
    for (std::size_t i = 0; i < numbers; ++i) {
        const auto order = compareNumbers(a.numbers[i], b.numbers[i]);
        if (order != 0)
            return order < 0 ? -1 : 1;
    }

    const std::size_t parts = std::max(a.rest.size(), b.rest.size());
    const Part end{Kind::End, {}};
    a.rest.resize(parts, end);
    b.rest.resize(parts, end);
    for (std::size_t i = 0; i < parts; ++i) {
        const auto order = compareParts(a.rest[i], b.rest[i]);
        if (order != 0)
            return order < 0 ? -1 : 1;
    }
    return 0;
}

} // namespace ferrobank::updates
