// The comparison of any three texts is an order: opposite ways agree, and it is transitive.

#include "Platform/linux/updates/feed/VersionComparison.h"

#include <cstdlib>

using namespace ferrobank::updates;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    const std::string_view all(reinterpret_cast<const char*>(data), size);
    const auto first = all.find('\n');
    const std::string_view a = all.substr(0, first);
    const std::string_view rest =
        first == std::string_view::npos ? std::string_view() : all.substr(first + 1);
    const auto second = rest.find('\n');
    const std::string_view b = rest.substr(0, second);
    const std::string_view c =
        second == std::string_view::npos ? std::string_view() : rest.substr(second + 1);
    const int ab = compareVersions(a, b);
    const int bc = compareVersions(b, c);
    const int ac = compareVersions(a, c);
    const bool isOrder = compareVersions(a, a) == 0 && ab == -compareVersions(b, a) &&
                         (ab > 0 || bc > 0 || ac <= 0) && (ab < 0 || bc < 0 || ac >= 0) &&
                         (ab != 0 || bc != 0 || ac == 0);
    if (!isOrder)
        std::abort();
    return 0;
}
