#pragma once

#include <QtCore/QStringList>

namespace ferrobank {

/// The environment for a program that is not ours, as "NAME=value": ours without what was set for our own
/// start (library paths, Qt's plug-ins, an application image's variables and the folders it put into PATH).
///
/// `activationToken` lets the program bring its window to the front; an empty one leaves none behind.
[[nodiscard]] QStringList foreignEnvironment(const QString& activationToken = {});

/// The same from any environment; the pure part.
[[nodiscard]] QStringList foreignEnvironment(const QStringList& ours, const QString& activationToken);

} // namespace ferrobank
