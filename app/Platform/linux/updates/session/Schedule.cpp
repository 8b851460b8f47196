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
constexpr int kDailyAttempts = 3;
/// Of the pause: the check that brings the next attempt may come a tenth early.
constexpr double kEarliest = 0.85;
constexpr qint64 kSilentDays = 14;
constexpr int kSilentSessions = 3;

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
    const milliseconds pause = facts.clockIsBehind ? std::min(kHour, pauseFor(facts)) : pauseFor(facts);
    const auto spread = static_cast<milliseconds::rep>(static_cast<double>(pause.count()) * kJitterShare *
                                                       std::clamp(facts.jitter, -1.0, 1.0));
    const milliseconds passed(std::max<qint64>(0, facts.lastCheck.msecsTo(facts.now)));
    return std::max(milliseconds(0), pause + milliseconds(spread) - passed);
}

bool endAtNow(UpdateState& state, const QDateTime& now)
{
    bool isChanged = false;
    const auto end = [&](QDateTime& time) {
        if (time.isValid() && time > now) {
            time = now;
            isChanged = true;
        }
    };
    end(state.lastCheck);
    end(state.lastGenuine);
    end(state.silentSince);
    for (FailedOffer& offer : state.failedOffers)
        end(offer.last);
    return isChanged;
}

bool isRefusal(Problem problem)
{
    switch (problem) {
    case Problem::Feed: // of an offer: its sizes
    case Problem::Signature:
    case Problem::Version:
    case Problem::Archive:
    case Problem::Install:
        return true;
    case Problem::Off:
    case Problem::Network:
    case Problem::Stale:
    case Problem::Space:
    case Problem::Place:
    case Problem::Busy:
        return false;
    }
    return false;
}

namespace {

bool isSame(const FailedOffer& failed, const Offer& offer)
{
    return failed.version == offer.version && failed.signature == offer.signature;
}

} // namespace

void noteRefusal(UpdateState& state, const Offer& offer, const QDateTime& now, const QString& sentence)
{
    FailedOffer failed =
        refusalOf(state, offer).value_or(FailedOffer{offer.version, offer.signature, 0, {}, {}});
    state.failedOffers.removeIf([&](const FailedOffer& one) { return isSame(one, offer); });
    failed.attempts = std::min(failed.attempts + 1, 1'000'000);
    failed.last = now;
    failed.sentence = sentence;
    state.failedOffers.prepend(failed);
    state.failedOffers.resize(std::min(state.failedOffers.size(), UpdateState::kMostFailedOffers));
}

std::optional<FailedOffer> refusalOf(const UpdateState& state, const Offer& offer)
{
    for (const FailedOffer& failed : state.failedOffers) {
        if (isSame(failed, offer))
            return failed;
    }
    return std::nullopt;
}

bool mayFetch(const UpdateState& state, const Offer& offer, const QDateTime& now)
{
    const auto failed = refusalOf(state, offer);
    if (!failed || !failed->last.isValid())
        return true;
    const seconds pause = failed->attempts <= kDailyAttempts ? kDay : kWeek;
    return static_cast<double>(failed->last.secsTo(now)) >= static_cast<double>(pause.count()) * kEarliest;
}

bool countsAsSilence(UpdateState& state, const QDateTime& now)
{
    if (!state.silentSince.isValid())
        state.silentSince = now;
    state.silentSessions = std::min(state.silentSessions + 1, 1'000'000);
    if (state.silentSince.daysTo(now) < kSilentDays || state.silentSessions < kSilentSessions)
        return false;
    state.silentSince = now; // said once in a fortnight, not at every check
    state.silentSessions = 0;
    return true;
}

void endSilence(UpdateState& state)
{
    state.silentSince = {};
    state.silentSessions = 0;
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
