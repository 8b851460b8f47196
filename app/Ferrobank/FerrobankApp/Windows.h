#pragma once

#include "Ferrobank/FerrobankApp/UpdatePrompts.h"
#include "Ferrobank/FerrobankApp/WindowLibrary.h"
#include "Ferrobank/Updater.h"
#include "Ferrobank/Views/MessageWindow.h"
#include "Platform/FolderChooser.h"

#include <QCoro/QCoroTask>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>

#include <functional>
#include <memory>
#include <vector>

namespace ferrobank {

/// What the windows need beside themselves. References must outlive Windows.
struct WindowsCollaborators {
    AppModel& model;
    LoginServices& loginServices;
    CommandLineTool& commandLineTool;
    Workspace& workspace;
    SettingsPages& settingsPages;
    Volumes& volumes;
    Diagnostics& diagnostics;
    QString home; ///< the user's home folder, absolute
};

/// The application's windows: loads their library when the first one opens, and does for them what belongs to
/// the whole program. Main thread. While no window is open nothing of them runs.
class Windows : public QObject, public WindowHost {
    Q_OBJECT

public:
    explicit Windows(WindowsCollaborators collaborators, QObject* parent = nullptr);
    ~Windows() override;

    /// Opens the main window or brings the open one to the front. A library that cannot be loaded is told in
    /// an alert.
    void openMain(const QString& activationToken);
    void openLoginItems();
    [[nodiscard]] bool mainIsVisible() const;

    /// What the updater shows to the user.
    [[nodiscard]] UpdateInterface& updates() { return _updates; }

    /// One question in front of the window in use; true to go on.
    [[nodiscard]] QCoro::Task<bool> askToGoOn(QString text);

    void showAlert(const QString& text) override;
    void chooseFolder(std::function<void(QString)> chosen) override;
    void quit() override;
    void trashAndQuit() override;
    void windowClosed() override;

Q_SIGNALS:
    /// After a window is gone with everything it had.
    void closed();

    /// The same, for the main window alone, before closed().
    void mainClosed();

private:
    template <typename Thing>
    [[nodiscard]] std::unique_ptr<Thing> make(const char* entryPoint);
    [[nodiscard]] QWindow* frontWindow() const;

    QCoro::Task<> recycleEverythingAndQuit();

    /// False when the library cannot be loaded.
    bool show(const Message& message, std::function<void(bool)> answered);

    WindowsCollaborators _with;
    WindowCollaborators _forWindows;
    WindowLibrary _library;
    std::unique_ptr<FolderChooser> _folderChooser;
    std::unique_ptr<MainWindow> _main;
    std::unique_ptr<MainWindow> _loginItems;
    std::vector<std::unique_ptr<MessageWindow>> _messages;
    UpdatePrompts _updates;
    QTimer _settled;
};

/// The program's windows of the moment, for the decision about updates.
[[nodiscard]] std::vector<WindowFacts> presentWindows();

} // namespace ferrobank
