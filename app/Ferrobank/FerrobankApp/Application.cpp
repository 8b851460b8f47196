#include "Ferrobank/FerrobankApp/Application.h"

#include "Ferrobank/FerrobankApp/FerrobankApp.h"
#include "Platform/Bundle.h"
#include "Platform/DesktopSession.h"
#include "Platform/Memory.h"
#include "Platform/SingleInstance.h"
#include "Platform/VersionOnTrial.h"

#include <QtCore/QLibraryInfo>
#include <QtCore/QLocale>
#include <QtCore/QTranslator>
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

/// Our words and the toolkit's in the language of the desktop, where there is a translation.
void translate(QApplication& application)
{
    const QLocale locale;
    if (locale.language() == QLocale::English || locale.language() == QLocale::C) {
        return;
    }
    const QString own = QString::fromStdString(Bundle::main().resource("translations"));
    const QString toolkit = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    const auto install = [&](const QString& name, const QString& folder) {
        auto* translator = new QTranslator(&application);
        if (translator->load(locale, name, u"_"_s, folder)) {
            QCoreApplication::installTranslator(translator);
        }
    };
    install(u"qtbase"_s, toolkit);
    install(u"ferrobank"_s, own);
}

} // namespace

int ferrobankApplication(int argc, char** argv)
{
    shareOneHeap();
    const QString activationToken = takeActivationToken();
    const std::unique_ptr<DesktopSession> session = DesktopSession::open();
    switch (session->instance().claim({.action = {}, .activationToken = activationToken})) {
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
    QApplication application(argc, argv); // ends the process where there is no display
    countStartOnTrial();
    translate(application);
    session->attach();

    FerrobankApp ferrobank(*session);
    ferrobank.launch(activationToken);
    return QApplication::exec();
}
