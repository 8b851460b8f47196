// The model without a user interface: carries out the operations that are named on the command line, one
// after the other, on the real system, and prints what a screen would show.
//
//   model-console [--link PATH] [setup] [checks] [restart] [uninstall] [export FOLDER]
//
// It belongs into a bundle, beside the executable. With --link the command link is made there instead of in
// its usual place. "export" uninstalls with a copy of the files and deletes the drive's data.

#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/Async/ThreadWorkQueue.h"
#include "Ferrobank/CLI/CLI.h"
#include "Ferrobank/CLI/CommandLineTool.h"
#include "Ferrobank/LoginServices.h"
#include "Ferrobank/Model/AppModel.h"
#include "Platform/Bundle.h"
#include "Platform/linux/files/LinuxVolumes.h"
#include "Platform/linux/files/SettingsFile.h"
#include "Platform/linux/link/PolkitLink.h"
#include "Platform/linux/login/LinuxLoginItemRegistry.h"
#include "Platform/linux/time/SystemClock.h"
#include "Platform/linux/workspace/DesktopPages.h"
#include "Platform/linux/workspace/LinuxWorkspace.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QTextStream>

using namespace Qt::StringLiterals;
using namespace ferrobank;

namespace {

/// Prints each row once for each way it has looked.
class Printer {
public:
    explicit Printer(AppModel& model) : _model(model)
    {
        QObject::connect(&model, &AppModel::setupTasksChanged, &model,
                         [this] { print(_model.setupTasks()); });
        QObject::connect(&model, &AppModel::checksChanged, &model, [this] { print(_model.checks()); });
        QObject::connect(&model, &AppModel::uninstallStateChanged, &model, [this] { printUninstall(); });
    }

    void write(const QString& line) { _out << line << Qt::endl; }

private:
    void print(const QList<CheckItem>& rows)
    {
        for (const CheckItem& row : rows) {
            const QString line = QStringList{row.id, rawValue(row.state), row.detail.value_or(QString()),
                                             row.fix.value_or(QString())}
                                     .join(u'|');
            if (row.state != CheckItem::State::Pending && _shown.value(row.id) != line) {
                _shown.insert(row.id, line);
                write(line);
            }
        }
    }

    void printUninstall()
    {
        switch (_model.uninstallState().kind) {
        case AppModel::UninstallState::Kind::Idle:
            break;
        case AppModel::UninstallState::Kind::Running:
            write(u"uninstall|running"_s);
            break;
        case AppModel::UninstallState::Kind::Done:
            write(u"uninstall|done|"_s + _model.uninstallState().text);
            break;
        case AppModel::UninstallState::Kind::Failed:
            write(u"uninstall|failed|"_s + _model.uninstallState().text);
            break;
        }
    }

    AppModel& _model;
    QTextStream _out{stdout};
    QHash<QString, QString> _shown;
};

QCoro::Task<> perform(AppModel& model, Printer& printer, QStringList operations)
{
    co_await model.refresh(); // nobody clicks before the first status has come
    while (!operations.isEmpty()) {
        const QString operation = operations.takeFirst();
        if (operation == u"setup"_s) {
            co_await model.runSetup();
            printer.write(model.setupDone() ? u"setup is done"_s : u"setup is not done"_s);
            if (model.setupDone()) {
                model.recordSetupComplete();
            }
        } else if (operation == u"checks"_s) {
            co_await model.runChecks();
            printer.write(model.checksPassed() ? u"checks passed"_s : u"checks did not pass"_s);
        } else if (operation == u"restart"_s) {
            co_await model.fix(FixAction::Restart);
            printer.write(model.checksPassed() ? u"checks passed"_s : u"checks did not pass"_s);
        } else if (operation == u"uninstall"_s) {
            const std::optional<QString> nowhere;
            co_await model.uninstall(nowhere, false);
        } else if (operation == u"export"_s && !operations.isEmpty()) {
            const std::optional<QString> folder = operations.takeFirst();
            co_await model.uninstall(folder, true);
        } else {
            qCritical("Not an operation: %s", qUtf8Printable(operation));
        }
        printer.write(model.setupComplete() ? u"setup is recorded"_s : u"setup is not recorded"_s);
    }
    QCoreApplication::quit();
}

QString takeLink(QStringList& arguments)
{
    if (arguments.size() < 2 || arguments.constFirst() != u"--link"_s) {
        return CommandLineTool::kLink.toString();
    }
    arguments.removeFirst();
    return arguments.takeFirst();
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments().sliced(1);
    const QString link = takeLink(arguments);

    PolkitLink privilegedLink;
    CommandLineTool commandLineTool(CLI::shared().url(), privilegedLink, link);
    LinuxWorkspace workspace;
    DesktopPages settingsPages;
    SettingsFile defaults;
    LinuxVolumes volumes;
    SystemClock clock;
    ThreadWorkQueue registryWork;
    LoginServices loginServices(LinuxLoginItemRegistry::shared(), registryWork);
    AppModel model(
        {.cli = CLI::shared(),
         .loginServices = loginServices,
         .commandLineTool = commandLineTool,
         .workspace = workspace,
         .settingsPages = settingsPages,
         .defaults = defaults,
         .volumes = volumes,
         .clock = clock,
         .home = QDir::homePath(),
         .volumeIcon = QString::fromStdString(Bundle::main().resource("VolumeIcon.icns").string())});
    Printer printer(model);
    QMetaObject::invokeMethod(
        &model, [&] { spawn(&model, perform(model, printer, arguments)); }, Qt::QueuedConnection);
    return QCoreApplication::exec();
}
