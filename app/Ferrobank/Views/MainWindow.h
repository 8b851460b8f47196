#pragma once

#include <QtCore/QString>

#include <functional>

class QWindow;

namespace ferrobank {

class AppModel;
class CommandLineTool;
class Diagnostics;
class LoginServices;
class SettingsPages;
class Volumes;
class Workspace;

/// What the windows ask of the program that shows them. Main thread. Outlives every window made for it.
class WindowHost {
public:
    virtual ~WindowHost() = default;

    /// One modal message with one button. Plain text. Returns at once or when the message is closed.
    virtual void showAlert(const QString& text) = 0;

    /// Lets the user choose a folder, with "Copy Here" as the confirming button. `chosen` is called at most
    /// once, with the absolute path; never when the user leaves the chooser otherwise. It may be called after
    /// the window is gone and is harmless then.
    virtual void chooseFolder(std::function<void(QString)> chosen) = 0;

    virtual void quit() = 0;

    /// Moves the application to the Trash and, whatever became of that, quits.
    virtual void trashAndQuit() = 0;

    /// The window was closed by the user or by close(). The window object must not be destroyed inside the
    /// call.
    virtual void windowClosed() = 0;
};

/// What the windows show and use. References must outlive the windows.
struct WindowCollaborators {
    AppModel& model;
    LoginServices& loginServices;
    CommandLineTool& commandLineTool;
    Workspace& workspace;
    SettingsPages& settingsPages;
    Volumes& volumes;
    Diagnostics& diagnostics;
    WindowHost& host;
    QString home; ///< the user's home folder, absolute
};

/// One of the application's windows: the main window or the Login Items window. Main thread.
///
/// The QML engine lives only while the window is open. The object itself is small and may be kept, and open()
/// called any number of times.
class MainWindow {
public:
    virtual ~MainWindow() = default;

    /// Shows the window, or brings the open one to the front. `activationToken` is the Wayland token of the
    /// click that caused it; empty where there is none.
    virtual void open(const QString& activationToken) = 0;

    /// Closes the window as its own close control does. Does nothing when it is not open.
    virtual void close() = 0;

    /// Open and neither hidden nor minimised.
    [[nodiscard]] virtual bool isVisible() const = 0;

    /// The native window while open, as parent for dialogs; null otherwise.
    [[nodiscard]] virtual QWindow* window() const = 0;
};

} // namespace ferrobank

/// Entry points of libferrobank-window, found by name. The caller owns the result and must not outlive the
/// library with it. Every engine is gone once the object is deleted.
extern "C" {
Q_DECL_EXPORT ferrobank::MainWindow* ferrobankMakeMainWindow(const ferrobank::WindowCollaborators& with);
Q_DECL_EXPORT ferrobank::MainWindow*
ferrobankMakeLoginItemsWindow(const ferrobank::WindowCollaborators& with);
}
