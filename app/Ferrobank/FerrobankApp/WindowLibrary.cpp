#include "Ferrobank/FerrobankApp/WindowLibrary.h"

#include "Platform/Bundle.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QIcon>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

} // namespace

WindowLibrary::WindowLibrary()
    : _library(QString::fromStdString(Bundle::main().executable().parent_path() / "libferrobank-window.so"))
{
}

QFunctionPointer WindowLibrary::resolve(const char* entryPoint)
{
    if (!_library.isLoaded() && _library.load()) {
        // Reading icons takes time that a start without a window does not need.
        QGuiApplication::setWindowIcon(QIcon::fromTheme(u"org.ferrobank.Ferrobank"_s));
    }
    return _library.resolve(entryPoint);
}

} // namespace ferrobank
