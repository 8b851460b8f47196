#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace ferrobank {

/// How something is mounted at a place, from the text of a mount table: source, place, kind and options, as
/// mount(8) would list them. Of several at one place it is the last, the one that is seen. Empty where
/// nothing is mounted. Pure.
///
/// Source of the format: proc_pid_mountinfo(5).
[[nodiscard]] QString mountLineOf(const QByteArray& mountinfo, const QString& mountpoint);

} // namespace ferrobank
