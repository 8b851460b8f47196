#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// What an export could not bring over faithfully. Keeps the first three sentences and counts the rest; with
/// any of them the drive must stay.
class Differences {
public:
    /// `path` is below the drive's root, as the file system has it; `what` goes on after it.
    void add(const std::string& path, const std::string& what);

    /// The same with the system's reason: "“a/b” could not be read: Input/output error."
    void add(const std::string& path, const std::string& what, int error);

    [[nodiscard]] std::uint64_t count() const { return _count; }

    [[nodiscard]] const std::vector<std::string>& first() const { return _first; }

private:
    std::uint64_t _count = 0;
    std::vector<std::string> _first;
};

} // namespace ferrobank::drive
