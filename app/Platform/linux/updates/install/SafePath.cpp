#include "Platform/linux/updates/install/SafePath.h"

#include <algorithm>
#include <cstddef>

namespace ferrobank::updates {
namespace {

constexpr std::size_t kLongestPath = 1024;
constexpr std::size_t kLongestName = 255;

/// Calls `visit` with each name between slashes; stops and returns false when it does.
template <typename Visit>
bool everyName(std::string_view path, Visit visit)
{
    while (true) {
        const auto end = path.find('/');
        if (!visit(path.substr(0, end)))
            return false;
        if (end == std::string_view::npos)
            return true;
        path.remove_prefix(end + 1);
    }
}

bool isPlainName(std::string_view name)
{
    return !name.empty() && name != "." && name != ".." && name.size() <= kLongestName;
}

} // namespace

bool isSafePath(std::string_view path)
{
    if (path.empty() || path.size() > kLongestPath || path.find('\0') != std::string_view::npos)
        return false;
    return everyName(path, isPlainName);
}

bool isSafeTarget(std::string_view path, std::string_view target)
{
    if (target.empty() || target.size() > kLongestPath || target.find('\0') != std::string_view::npos ||
        target.front() == '/')
        return false;
    auto depth = std::ranges::count(path, '/');
    bool isAtBeginning = true;
    return everyName(target, [&](std::string_view name) {
        if (name == "..")
            return isAtBeginning && --depth >= 0;
        isAtBeginning = false;
        return isPlainName(name);
    });
}

} // namespace ferrobank::updates
