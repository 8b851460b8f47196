#pragma once

#include "Platform/linux/updates/feed/AppcastItem.h"

#include <QtCore/QDateTime>

#include <string>

namespace ferrobank::updates {

/// What a genuine feed shows of its age, and what is remembered of the best one seen. A later feed must not
/// show less. Plain value; what is not known is empty or invalid.
struct Freshness {
    std::string highest;  ///< the highest version in it
    QDateTime newest;     ///< the date of its newest release
    QDateTime validUntil; ///< its end

    friend bool operator==(const Freshness&, const Freshness&) = default;
};

/// What is to be remembered of a feed that expectFresh() has passed at this time of the clock. An end in a
/// distant future, as a typing error makes it, is not remembered as such: no feed after it could be fresh.
/// Pure.
[[nodiscard]] Freshness freshnessOf(const Appcast& appcast, const QDateTime& clock);

/// Throws UpdateFailure: Feed when the feed names no end or one before its newest release, Stale when its end
/// is over or it shows less than was seen before. A clock that is behind does not make an old feed fresh: the
/// newest date ever seen is past as well. Pure.
void expectFresh(const Appcast& appcast, const Freshness& seen, const QDateTime& clock);

} // namespace ferrobank::updates
