#include "Ferrobank/FerrobankApp/Application.h"

#include "Ferrobank/FerrobankApp/FerrobankApp.h"
#include "Ferrobank/Words/Catalogue.h"
#include "Platform/Bundle.h"
#include "Platform/ChildProcess.h"
#include "Platform/DesktopSession.h"
#include "Platform/Memory.h"
#include "Platform/SingleInstance.h"
#include "Platform/StartScale.h"
#include "Platform/VersionOnTrial.h"

#include <QtCore/QLocale>
#include <QtWidgets/QApplication>

#include <cstdio>
#include <cstdlib>

namespace {

using namespace Qt::StringLiterals;
using namespace ferrobank;

/// The token of the click that started this program. Taken out of the environment, because it is good for one
/// window and of no use to child processes.
QString takeActivationToken()
{
    QString token;
    for (const char* name : {"DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN"}) {
        if (qEnvironmentVariableIsSet(name)) {
            token = qEnvironmentVariable(name);
            qunsetenv(name);
        }
    }
    return token;
}

/// The command that a launcher's entry asks for by "--action NAME"; empty for none.
QString actionOf(int argc, char** argv)
{
    const bool asks = argc >= 3 && qstrcmp(argv[1], "--action") == 0;
    return asks ? QString::fromLocal8Bit(argv[2]) : QString();
}

} // namespace

int ferrobankApplication(int argc, char** argv)
{
    shareOneHeap();
    ChildProcess::keepEnvironment();
    const InstanceRequest request{.action = actionOf(argc, argv), .activationToken = takeActivationToken()};
    const std::unique_ptr<DesktopSession> session = DesktopSession::open();
    switch (session->instance().claim(request)) {
    case SingleInstance::Role::First:
        break;
    case SingleInstance::Role::Forwarded:
        return EXIT_SUCCESS;
    case SingleInstance::Role::Unanswered:
        std::fputs("Ferrobank is running, but does not answer.\n", stderr);
        return EXIT_FAILURE;
    }

    QCoreApplication::setApplicationName(u"Ferrobank"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(FERROBANK_VERSION));
    QGuiApplication::setApplicationDisplayName(u"Ferrobank"_s);
    QGuiApplication::setDesktopFileName(u"org.ferrobank.Ferrobank"_s);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    // No argument is meant for the toolkit: one that it knows must not change how the program starts.
    int programOnly = 1;
    StartScale scale;
    QApplication application(programOnly, argv); // ends the process where there is no display
    scale.settled();
    countStartOnTrial();
    installWords(QString::fromStdString(Bundle::main().resource("translations")),
                 QLocale::system().uiLanguages());
    session->attach();

    FerrobankApp ferrobank(*session);
    ferrobank.launch(request);
    return QApplication::exec();
}
