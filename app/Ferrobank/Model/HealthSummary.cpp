#include "Ferrobank/Model/HealthSummary.h"

#include <QtCore/QCoreApplication>

#include <algorithm>

namespace ferrobank {

HealthSummary HealthSummary::of(const QList<CheckItem>& checks, bool running)
{
    if (running || checks.isEmpty()) {
        return {.kind = Kind::Running,
                .text = QCoreApplication::translate("HealthSummary", "Running checks…"),
                .note = {}};
    }
    const auto passed = std::ranges::count(checks, CheckItem::State::Pass, &CheckItem::state);
    const auto failed = std::ranges::find(checks, CheckItem::State::Fail, &CheckItem::state);
    return {.kind = passed == checks.size() ? Kind::Passed : Kind::Failing,
            .text = QCoreApplication::translate("HealthSummary", "%1 of %2 checks passed")
                        .arg(passed)
                        .arg(checks.size()),
            .note = failed == checks.end() ? QString() : failed->detail.value_or(failed->title)};
}

} // namespace ferrobank
