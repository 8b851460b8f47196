#include "exporting/Differences.h"

#include "figures/DisplayText.h"

#include <system_error>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kNamed = 3;

} // namespace

void Differences::add(const std::string& path, const std::string& what)
{
    ++_count;
    if (_first.size() < kNamed) {
        _first.push_back("“" + displayName(path) + "” " + what + ".");
    }
}

void Differences::add(const std::string& path, const std::string& what, int error)
{
    add(path, what + ": " + std::generic_category().message(error));
}

} // namespace ferrobank::drive
