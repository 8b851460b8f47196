#include "Ferrobank/Diagnostics/ToolJournal.h"

namespace ferrobank {

void ToolJournal::note(const QStringList& args, const QString& words, const QDateTime& at)
{
    if (!_entries.isEmpty() && _entries.constLast().args == args && _entries.constLast().words == words) {
        Entry& same = _entries.last();
        same.at = at;
        ++same.times;
        return;
    }
    if (_entries.size() == kMost) {
        _entries.removeFirst();
    }
    _entries.append({.args = args, .words = words, .at = at});
}

} // namespace ferrobank
