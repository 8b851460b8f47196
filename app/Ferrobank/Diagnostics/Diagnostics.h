#pragma once

#include "Ferrobank/Diagnostics/ToolJournal.h"
#include "Platform/LoginItemRegistry.h"

#include <QCoro/QCoroTask>
#include <QtCore/QString>

namespace ferrobank {

class AppModel;
class CLI;
class LoginServices;
class SystemReport;

/// What the report is made from. References must outlive it.
struct DiagnosticsCollaborators {
    AppModel& model;
    LoginServices& loginServices;
    CLI& cli;
    const ToolJournal& journal;
    SystemReport& system;
    QString version; ///< of the application
    QString toolkit; ///< with its version and what it draws on
    QString home;    ///< the user's home folder, absolute
};

/// Gathers the facts of a problem report. Main thread, for the life of the program.
class Diagnostics {
public:
    explicit Diagnostics(DiagnosticsCollaborators collaborators);

    /// The report as text (see diagnosticReport). Never fails: what cannot be learned is told as unknown.
    /// Waits for the drive tool to tell its version, for the login services and for the
    /// desktop's services.
    QCoro::Task<QString> gather();

private:
    QCoro::Task<QString> toolVersion();
    QCoro::Task<LoginServiceStatus> statusNow(LoginService service);

    DiagnosticsCollaborators _with;
};

} // namespace ferrobank
