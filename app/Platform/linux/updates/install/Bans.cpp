#include "Platform/linux/updates/install/Bans.h"

#include <algorithm>
#include <limits>
#include <sstream>
#include <utility>

namespace ferrobank::updates {
namespace {

constexpr std::size_t kMostBans = 50;
constexpr std::int64_t kDay = 86'400;
constexpr int kMostTimes = 1'000;

std::int64_t lengthOf(int times)
{
    return times <= 1 ? 7 * kDay : times == 2 ? 30 * kDay : 90 * kDay;
}

} // namespace

std::int64_t endOf(const Ban& ban)
{
    const std::int64_t length = lengthOf(ban.times);
    return ban.since > std::numeric_limits<std::int64_t>::max() - length ? ban.since : ban.since + length;
}

bool isInForce(const Ban& ban, std::int64_t now)
{
    return now < endOf(ban);
}

std::vector<Ban> startedInTime(std::vector<Ban> bans, std::int64_t now)
{
    for (Ban& ban : bans)
        ban.since = std::min(ban.since, now);
    return bans;
}

std::vector<Ban> withFailure(std::vector<Ban> bans, const std::string& version, std::int64_t now)
{
    const int times = std::min(timesBanned(bans, version) + 1, kMostTimes);
    std::erase_if(bans, [&](const Ban& ban) { return ban.version == version; });
    bans.insert(bans.begin(), {version, times, now});
    bans.resize(std::min(bans.size(), kMostBans));
    return bans;
}

int timesBanned(const std::vector<Ban>& bans, std::string_view version)
{
    const auto found = std::ranges::find(bans, version, &Ban::version);
    return found == bans.end() ? 0 : found->times;
}

std::string bansText(const std::vector<Ban>& bans)
{
    std::string text;
    for (const Ban& ban : bans)
        text += ban.version + ' ' + std::to_string(ban.times) + ' ' + std::to_string(ban.since) + '\n';
    return text;
}

std::vector<Ban> readBans(const std::string& text)
{
    std::vector<Ban> bans;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line) && bans.size() < kMostBans;) {
        std::istringstream words(line);
        Ban ban;
        if (!(words >> ban.version))
            continue;
        if (!(words >> ban.times >> ban.since)) {
            ban.times = 1;
            ban.since = 0;
        }
        ban.times = std::clamp(ban.times, 1, kMostTimes);
        ban.since = std::max<std::int64_t>(ban.since, 0);
        if (timesBanned(bans, ban.version) == 0)
            bans.push_back(std::move(ban));
    }
    return bans;
}

} // namespace ferrobank::updates
