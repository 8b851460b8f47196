#pragma once

#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/session/UpdateState.h"
#include "Platform/linux/updates/values/Offer.h"
#include "Platform/linux/updates/values/UpdateConfiguration.h"

#include <chrono>

namespace ferrobank::updates {

/// What the time of the next check depends on. Plain value.
struct ScheduleFacts {
    QDateTime now;
    QDateTime lastCheck; ///< invalid for never; one in the future counts as now
    std::chrono::seconds interval{86'400};
    int failures = 0;
    bool hasStaged = false;     ///< a downloaded update waits for the application to quit
    bool needsAnswer = false;   ///< … or an update waits that only the user can decide about
    bool clockIsBehind = false; ///< it shows a time that is past for certain: it will be set soon
    double jitter = 0;          ///< -1 to 1; spreads the checks of many copies over a tenth of the interval
};

/// How long to wait for the next scheduled check: zero when it is overdue. After failures one hour, two,
/// four, up to a day, so that a broken server is not asked without end. Pure.
[[nodiscard]] std::chrono::milliseconds untilNextCheck(const ScheduleFacts& facts);

/// Brings every time that lies in the future back to now: one wrong clock at one start must not stop what is
/// counted from it. True when something was changed, and has to be saved. Pure.
bool endAtNow(UpdateState& state, const QDateTime& now);

/// Whether a failure belongs to the offer itself, so that the same bytes would fail again, and not to the
/// way, the disk or the moment. Pure.
[[nodiscard]] bool isRefusal(Problem problem);

/// Counts a refusal of this very offer.
void noteRefusal(UpdateState& state, const Offer& offer, const QDateTime& now, const QString& sentence);

/// The refusals of this very offer so far; none where there are none.
[[nodiscard]] std::optional<FailedOffer> refusalOf(const UpdateState& state, const Offer& offer);

/// Whether an offer may be downloaded without being asked for: one that was refused is tried again daily,
/// from the fourth refusal on weekly. Pure.
[[nodiscard]] bool mayFetch(const UpdateState& state, const Offer& offer, const QDateTime& now);

/// Counts a session that left this copy without the newest version and the user without a word. True when
/// that has gone on for a fortnight and at least three sessions: the user has to be told, and the counting
/// begins anew. Pure.
[[nodiscard]] bool countsAsSilence(UpdateState& state, const QDateTime& now);
void endSilence(UpdateState& state);

/// Whether this copy checks by itself: the user's answer, else what the build says. Pure.
[[nodiscard]] bool checksAutomatically(const UpdateConfiguration& configuration, const UpdateState& state);

/// Whether it downloads and installs by itself. Pure.
[[nodiscard]] bool downloadsAutomatically(const UpdateConfiguration& configuration, const UpdateState& state);

/// Whether the user has to be asked for automatic checks: nobody has decided, and this is not the first
/// launch, where the user has other things to do. Pure.
[[nodiscard]] bool mustAskForConsent(const UpdateConfiguration& configuration, const UpdateState& state);

} // namespace ferrobank::updates
