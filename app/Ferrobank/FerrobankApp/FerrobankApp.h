#pragma once

#include "Ferrobank/Async/ThreadWorkQueue.h"
#include "Ferrobank/CLI/CommandLineTool.h"
#include "Ferrobank/CLI/ProcessCLI.h"
#include "Ferrobank/Diagnostics/Diagnostics.h"
#include "Ferrobank/Diagnostics/NotingCLI.h"
#include "Ferrobank/Diagnostics/ToolJournal.h"
#include "Ferrobank/FerrobankApp/TrayMenu.h"
#include "Ferrobank/FerrobankApp/Windows.h"
#include "Ferrobank/LoginServices.h"
#include "Ferrobank/Model/AppModel.h"
#include "Ferrobank/Updater.h"
#include "Platform/DesktopSession.h"
#include "Platform/SingleInstance.h"
#include "Platform/StatusItem.h"
#include "Platform/System.h"
#include "Platform/SystemChanges.h"
#include "Platform/TerminationSignals.h"

#include <QtCore/QObject>
#include <QtCore/QString>

#include <memory>

namespace ferrobank {

/// The running application: the tray item with its menu, always there, and the main window, opened at launch
/// only while setup is unfinished. Composes everything from the real parts. Main thread; one for the life of
/// the process, inside that of the application object and of the session.
///
/// Closing windows ends nothing. The program ends by the menu, by a signal, with the session, and after
/// moving itself to the Trash.
class FerrobankApp : public QObject {
    Q_OBJECT

public:
    explicit FerrobankApp(DesktopSession& session);
    ~FerrobankApp() override;

    /// Carries out what the start asks for, or opens the window if the launch rule says so, as soon as that
    /// is known.
    void launch(const InstanceRequest& request);

private:
    /// False for an action that does not exist.
    [[nodiscard]] bool carryOut(const InstanceRequest& request);
    void openWindow(const QString& activationToken);
    void tellOfBackground();
    void openWindowUnlessSetUp(const QString& activationToken);

    // In the order in which they are made: the item first, so that the panel has it while the rest is built.
    std::unique_ptr<StatusItem> _statusItem;
    std::unique_ptr<System> _system;
    ToolJournal _toolJournal;
    ProcessCLI _tool;
    NotingCLI _cli;
    ThreadWorkQueue _registryWork;
    LoginServices _loginServices;
    CommandLineTool _commandLineTool;
    std::unique_ptr<AppModel> _model;
    Diagnostics _diagnostics;
    std::unique_ptr<Windows> _windows;
    std::unique_ptr<Updater> _updater;
    std::unique_ptr<SystemChanges> _systemChanges;
    std::unique_ptr<TrayMenu> _menu;
    std::unique_ptr<TerminationSignals> _terminationSignals;
    bool _toldOfBackground = false;
};

} // namespace ferrobank
