#pragma once

#include <QtCore/QString>

namespace ferrobank {

/// Moves a file or folder to the user's Trash after the desktops' common rules. Whether it is there now; if
/// not, it is where it was. May block; any thread.
bool moveToTrash(const QString& path);

} // namespace ferrobank
