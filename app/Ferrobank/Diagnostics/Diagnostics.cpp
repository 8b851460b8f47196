#include "Ferrobank/Diagnostics/Diagnostics.h"

#include "Ferrobank/CLI/CLI.h"
#include "Ferrobank/Diagnostics/DiagnosticReport.h"
#include "Ferrobank/LoginServices.h"
#include "Ferrobank/Model/AppModel.h"

#include <QtCore/QLocale>
#include <QtCore/QSysInfo>

#include <utility>

namespace ferrobank {

using namespace Qt::StringLiterals;

Diagnostics::Diagnostics(DiagnosticsCollaborators collaborators) : _with(std::move(collaborators)) {}

QCoro::Task<QString> Diagnostics::toolVersion()
{
    const QStringList args{u"--version"_s};
    QString version;
    try {
        version = co_await _with.cli.run(args);
    } catch (const std::exception& error) {
        version = u"does not tell its version: "_s + QString::fromUtf8(error.what());
    }
    co_return version.trimmed();
}

QCoro::Task<LoginServiceStatus> Diagnostics::statusNow(LoginService service)
{
    const auto status = co_await _with.loginServices.ask(service);
    co_return status.value_or(kNoAnswer);
}

QCoro::Task<QString> Diagnostics::gather()
{
    const auto& status = _with.model.status();
    const QString mountpoint = status ? status->mountpoint : QString();
    DiagnosticFacts facts;
    facts.surroundings = co_await _with.system.read(mountpoint);
    facts.toolVersion = co_await toolVersion();
    facts.version = _with.version;
    facts.toolkit = _with.toolkit;
    facts.system = QSysInfo::prettyProductName();
    facts.kernel = u"%1 %2 %3"_s.arg(QSysInfo::kernelType(), QSysInfo::kernelVersion(),
                                     QSysInfo::currentCpuArchitecture());
    facts.language = QLocale().name();
    facts.agent = co_await statusNow(LoginService::Agent);
    facts.menu = co_await statusNow(LoginService::MainApp);
    facts.setupComplete = _with.model.setupComplete();
    facts.drive = _with.model.status();
    facts.checks = _with.model.checks();
    facts.toolFailures = _with.journal.entries();
    facts.home = _with.home;
    co_return diagnosticReport(facts);
}

} // namespace ferrobank
