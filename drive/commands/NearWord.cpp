#include "commands/NearWord.h"

#include <algorithm>

namespace ferrobank::drive {

namespace {

/// Slips of the hand between two words: letters wrong, missing, too many, or exchanged with a neighbour.
std::size_t slips(const std::string& one, const std::string& other)
{
    const std::size_t width = other.size() + 1;
    std::vector<std::size_t> table((one.size() + 1) * width);
    const auto at = [&](std::size_t row, std::size_t column) -> std::size_t& {
        return table[row * width + column];
    };
    for (std::size_t row = 0; row <= one.size(); ++row) {
        for (std::size_t column = 0; column <= other.size(); ++column) {
            if (row == 0 || column == 0) {
                at(row, column) = row + column;
                continue;
            }
            const bool same = one[row - 1] == other[column - 1];
            std::size_t least = std::min({at(row - 1, column) + 1, at(row, column - 1) + 1,
                                          at(row - 1, column - 1) + (same ? 0U : 1U)});
            const bool exchanged = row > 1 && column > 1 && one[row - 1] == other[column - 2] &&
                                   one[row - 2] == other[column - 1];
            if (exchanged) {
                least = std::min(least, at(row - 2, column - 2) + 1);
            }
            at(row, column) = least;
        }
    }
    return at(one.size(), other.size());
}

} // namespace

std::optional<std::string> nearestWord(const std::string& typed, const std::vector<std::string>& words)
{
    constexpr std::size_t kMostSlips = 2;
    constexpr std::size_t kLongestTyped = 64;
    std::optional<std::string> nearest;
    std::size_t fewest = kMostSlips + 1;
    for (const std::string& word : words) {
        const std::size_t found = typed.size() <= kLongestTyped ? slips(typed, word) : fewest;
        if (found < fewest && found * 2 < std::max(typed.size(), word.size())) {
            nearest = word;
            fewest = found;
        }
    }
    return nearest;
}

} // namespace ferrobank::drive
