#include "Platform/linux/updates/session/Schedule.h"

#include <algorithm>

namespace ferrobank::updates {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr seconds kHour{3600};
constexpr seconds kDay{24 * 3600};
constexpr seconds kWeek{7 * 24 * 3600};
constexpr double kJitterShare = 0.1;
constexpr int kMostDoublings = 5;

seconds pauseFor(const ScheduleFacts& facts)
{
    if (facts.failures > 0)
        return std::min(kDay, kHour * (1 << std::min(facts.failures - 1, kMostDoublings)));
    if (facts.needsAnswer)
        return std::min(facts.interval, kWeek);
    if (facts.hasStaged)
        return std::max(facts.interval, kWeek);
    return facts.interval;
}

} // namespace

milliseconds untilNextCheck(const ScheduleFacts& facts)
{
    if (!facts.lastCheck.isValid())
        return milliseconds(0);
    const milliseconds pause = pauseFor(facts);
    const auto spread = static_cast<milliseconds::rep>(static_cast<double>(pause.count()) * kJitterShare *
                                                       std::clamp(facts.jitter, -1.0, 1.0));
    const milliseconds passed(std::max<qint64>(0, facts.lastCheck.msecsTo(facts.now)));
    return std::max(milliseconds(0), pause + milliseconds(spread) - passed);
}

bool checksAutomatically(const UpdateConfiguration& configuration, const UpdateState& state)
{
    if (!configuration.isOn() || configuration.interval.count() == 0)
        return false;
    return state.automaticChecks.value_or(configuration.automaticChecks.value_or(false));
}

bool downloadsAutomatically(const UpdateConfiguration& configuration, const UpdateState& state)
{
    return configuration.allowsAutomaticDownload &&
           state.automaticDownload.value_or(configuration.automaticDownload);
}

bool mustAskForConsent(const UpdateConfiguration& configuration, const UpdateState& state)
{
    return configuration.isOn() && !configuration.automaticChecks && !state.automaticChecks &&
           state.launches >= 2;
}

} // namespace ferrobank::updates
