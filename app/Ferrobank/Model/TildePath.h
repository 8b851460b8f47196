#pragma once

#include <QtCore/QString>

namespace ferrobank {

/// The path with the home folder at its beginning written as "~". Pure; only whole names count, so
/// "/home/anna" is not the beginning of "/home/annabel".
[[nodiscard]] QString abbreviatedWithTilde(const QString& path, const QString& home);

} // namespace ferrobank
