#include "Ferrobank/FerrobankApp/WindowLibrary.h"

#include "Platform/Bundle.h"

#include <QtGui/QFontDatabase>
#include <QtGui/QGuiApplication>
#include <QtGui/QIcon>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

/// For window lists of desktops that do not know the program's desktop file. Larger pictures would only cost
/// time: the window's whole icon is sent to the display and to the window manager at each opening.
QIcon applicationIcon()
{
    QIcon icon;
    for (const int edge : {16, 24, 32, 48, 64}) {
        const QString file = u"icons/hicolor/%1x%1/apps/org.ferrobank.Ferrobank.png"_s.arg(edge);
        icon.addFile(QString::fromStdString(Bundle::main().resource(file.toUtf8().constData())));
    }
    return icon;
}

} // namespace

WindowLibrary::WindowLibrary()
    : _library(QString::fromStdString(Bundle::main().executable().parent_path() / "libferrobank-window.so"))
{}

QFunctionPointer WindowLibrary::resolve(const char* entryPoint)
{
    if (!_library.isLoaded()) {
        // Finding out which fonts there are takes as long as loading the library, and no turns with it.
        _fonts = std::jthread([] { static_cast<void>(QFontDatabase::families()); });
    }
    if (!_library.isLoaded() && _library.load()) {
        // Reading icons takes time that a start without a window does not need.
        QGuiApplication::setWindowIcon(applicationIcon());
    }
    return _library.resolve(entryPoint);
}

} // namespace ferrobank
