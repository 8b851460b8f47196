#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ferrobank {

/// The drive tool's latest failures, in memory only: what a problem report tells of them. Main thread.
///
/// A failure that repeats the one before it, as a poll's does, is counted instead of kept again.
class ToolJournal {
public:
    struct Entry {
        QStringList args;
        QString words; ///< the tool's own, or why it could not be started
        QDateTime at;  ///< the last time
        int times = 1;

        friend bool operator==(const Entry&, const Entry&) = default;
    };

    static constexpr int kMost = 5;

    void note(const QStringList& args, const QString& words, const QDateTime& at);

    /// The oldest first; never more than kMost.
    [[nodiscard]] const QList<Entry>& entries() const { return _entries; }

private:
    QList<Entry> _entries;
};

} // namespace ferrobank
