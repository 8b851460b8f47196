#pragma once

#include "Ferrobank/CLI/CheckItem.h"

#include <QtCore/QList>
#include <QtCore/QString>

namespace ferrobank {

/// The dashboard's one line about the health checks. Plain value.
struct HealthSummary {
    enum class Kind {
        Running, ///< checks are at work, or none has run yet
        Passed,
        Failing, ///< finished, and not every row passed
    };

    Kind kind = Kind::Running;
    QString text;
    QString note; ///< about the first failed row; empty where there is none

    static HealthSummary of(const QList<CheckItem>& checks, bool running);

    friend bool operator==(const HealthSummary&, const HealthSummary&) = default;
};

} // namespace ferrobank
