#pragma once

#include <QtCore/QString>

#include <functional>
#include <memory>

class QWindow;

namespace ferrobank {

/// The desktop's dialog for choosing one folder, in which new folders can be made. Main thread.
class FolderChooser {
public:
    /// How the dialog is worded and what it is shown for.
    struct Request {
        QString title;
        QString confirm;           ///< the button that takes the folder
        QString folder;            ///< absolute; where it starts
        QWindow* parent = nullptr; ///< the window it belongs to, if any
    };

    virtual ~FolderChooser() = default;

    /// Opens the dialog and returns at once; one that is open already stays the only one. `chosen` gets the
    /// absolute path of a folder on this computer; it is not called when the user leaves the dialog
    /// otherwise.
    virtual void choose(const Request& request, std::function<void(QString)> chosen) = 0;

    static std::unique_ptr<FolderChooser> make();
};

} // namespace ferrobank
