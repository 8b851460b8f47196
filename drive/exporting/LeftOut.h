#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace ferrobank::drive {

/// What a copy does without by its nature: sockets, devices, flags that only the drive's own file system has.
/// None of it holds any of the user's data, so it keeps no export from being whole, but the user is told.
/// Keeps the first hundred sentences and counts the rest.
class LeftOut {
public:
    /// The same sentence counts once.
    void add(std::string sentence)
    {
        if (std::find(_first.begin(), _first.end(), sentence) != _first.end()) {
            return;
        }
        ++_count;
        if (_first.size() < kNamed) {
            _first.push_back(std::move(sentence));
        }
    }

    [[nodiscard]] std::uint64_t count() const { return _count; }

    [[nodiscard]] const std::vector<std::string>& first() const { return _first; }

private:
    static constexpr std::size_t kNamed = 100;

    std::uint64_t _count = 0;
    std::vector<std::string> _first;
};

} // namespace ferrobank::drive
