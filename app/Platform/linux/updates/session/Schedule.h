#pragma once

#include "Platform/linux/updates/session/UpdateState.h"
#include "Platform/linux/updates/values/UpdateConfiguration.h"

#include <chrono>

namespace ferrobank::updates {

/// What the time of the next check depends on. Plain value.
struct ScheduleFacts {
    QDateTime now;
    QDateTime lastCheck; ///< invalid for never; one in the future counts as now
    std::chrono::seconds interval{86'400};
    int failures = 0;
    bool hasStaged = false;   ///< a downloaded update waits for the application to quit
    bool needsAnswer = false; ///< … or an update waits that only the user can decide about
    double jitter = 0;        ///< -1 to 1; spreads the checks of many copies over a tenth of the interval
};

/// How long to wait for the next scheduled check: zero when it is overdue. After failures one hour, two,
/// four, up to a day, so that a broken server is not asked without end. Pure.
[[nodiscard]] std::chrono::milliseconds untilNextCheck(const ScheduleFacts& facts);

/// Whether this copy checks by itself: the user's answer, else what the build says. Pure.
[[nodiscard]] bool checksAutomatically(const UpdateConfiguration& configuration, const UpdateState& state);

/// Whether it downloads and installs by itself. Pure.
[[nodiscard]] bool downloadsAutomatically(const UpdateConfiguration& configuration, const UpdateState& state);

/// Whether the user has to be asked for automatic checks: nobody has decided, and this is not the first
/// launch, where the user has other things to do. Pure.
[[nodiscard]] bool mustAskForConsent(const UpdateConfiguration& configuration, const UpdateState& state);

} // namespace ferrobank::updates
