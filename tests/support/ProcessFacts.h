#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

namespace ferrobank::test {

/// What this process has open and started, at the moment of construction.
struct ProcessFacts {
    ProcessFacts();

    int openDescriptors = 0;
    qint64 residentBytes = 0;

    /// The most bytes that were resident since resetPeak().
    qint64 peakBytes = 0;

    static void resetPeak();

    /// False under the address sanitizer, where peaks mean nothing.
    [[nodiscard]] static bool freedMemoryIsReused();

    /// Children that exist now, zombies included.
    [[nodiscard]] int children() const;

    /// Ids of all processes that run the executable.
    [[nodiscard]] QList<int> processesRunning(const QString& executable) const;
};

} // namespace ferrobank::test
