#include "Ferrobank/Diagnostics/NotingCLI.h"

#include "Ferrobank/Diagnostics/ToolJournal.h"

#include <exception>

namespace ferrobank {

QCoro::Task<QString> NotingCLI::run(QStringList args)
{
    ToolJournal& journal = _journal;
    QString output;
    try {
        output = co_await _cli.run(args);
    } catch (const std::exception& error) {
        journal.note(args, QString::fromUtf8(error.what()), QDateTime::currentDateTimeUtc());
        throw;
    }
    co_return output;
}

} // namespace ferrobank
