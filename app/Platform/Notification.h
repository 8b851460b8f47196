#pragma once

#include <QtCore/QString>

namespace ferrobank {

/// Shows a short message in the desktop's own way, under the program's name and icon. Plain text. Main
/// thread; returns at once. On a desktop without notifications nothing is seen.
void notifyUser(const QString& title, const QString& text);

} // namespace ferrobank
