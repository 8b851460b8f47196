#include "Platform/linux/updates/feed/Freshness.h"

#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/feed/VersionComparison.h"

#include <algorithm>

namespace ferrobank::updates {
namespace {

constexpr qint64 kLongestValidity = 400; ///< days

/// The later of two times, of which one may be unknown.
QDateTime later(const QDateTime& one, const QDateTime& other)
{
    if (!one.isValid() || !other.isValid())
        return one.isValid() ? one : other;
    return std::max(one, other);
}

} // namespace

Freshness freshnessOf(const Appcast& appcast, const QDateTime& clock)
{
    Freshness freshness;
    for (const AppcastItem& item : appcast.items) {
        if (isNewer(item.version, freshness.highest))
            freshness.highest = item.version;
        if (item.date)
            freshness.newest = later(freshness.newest, *item.date);
    }
    if (appcast.validUntil)
        freshness.validUntil =
            std::min(*appcast.validUntil, later(clock, freshness.newest).addDays(kLongestValidity));
    return freshness;
}

void expectFresh(const Appcast& appcast, const Freshness& seen, const QDateTime& clock)
{
    const Freshness freshness = freshnessOf(appcast, clock);
    if (!appcast.validUntil)
        throw UpdateFailure(Problem::Feed,
                            "The list of updates cannot be read: it does not say until when it is valid.");
    if (freshness.newest.isValid() && *appcast.validUntil < freshness.newest)
        throw UpdateFailure(Problem::Feed,
                            "The list of updates cannot be read: its dates contradict each other.");
    const QDateTime now = later(clock, later(seen.newest, freshness.newest));
    const bool isExpired = *appcast.validUntil < now;
    const bool isOlder = !seen.highest.empty() && isNewer(seen.highest, freshness.highest);
    const bool isEarlier =
        seen.newest.isValid() && (!freshness.newest.isValid() || freshness.newest < seen.newest);
    const bool endsEarlier = seen.validUntil.isValid() && *appcast.validUntil < seen.validUntil;
    if (isExpired || isOlder || isEarlier || endsEarlier)
        throw UpdateFailure(Problem::Stale,
                            "The list of updates is an old one: newer versions may be hidden.");
}

} // namespace ferrobank::updates
