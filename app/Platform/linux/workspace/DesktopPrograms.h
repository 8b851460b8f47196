#pragma once

#include <QCoro/QCoroTask>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <chrono>

namespace ferrobank {

/// A command of another program: its name, then its arguments.
using Command = QStringList;

/// The executable of that name in the user's search path, ours excluded; empty when there is none.
[[nodiscard]] QString programNamed(const QString& name);

/// Tries the commands in turn until one works, each in the environment of a foreign program. Whether one did.
///
/// A program that is missing, or that ends at once with an error, has not worked; one that runs on, or ends
/// later in whatever way, has: the user has seen it, and may have closed it. Nobody waits for it.
QCoro::Task<bool>
startFirstThatWorks(QList<Command> commands, QString activationToken,
                    std::chrono::milliseconds failsAtOnce = std::chrono::milliseconds(1500));

} // namespace ferrobank
