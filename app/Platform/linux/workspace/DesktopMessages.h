#pragma once

#include <QtCore/QString>

#include <functional>

namespace ferrobank {

/// What only a program with a window can do for the desktop's side of the seam. All of it is optional, and
/// called on the main thread.
struct DesktopMessages {
    /// Shows one plain sentence, where nothing on this desktop could do what the user asked for.
    std::function<void(QString sentence)> show;

    /// A token of the user's last click, with which another program may bring its window to the front.
    std::function<QString()> activationToken;
};

} // namespace ferrobank
