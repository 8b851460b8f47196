#include "Ferrobank/FerrobankApp/Windows.h"

#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/FerrobankApp/Alerts.h"
#include "Platform/Memory.h"
#include "Platform/Workspace.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTimer>
#include <QtGui/QGuiApplication>
#include <QtGui/QWindow>

#include <utility>

namespace ferrobank {

namespace {

/// A document window; dialogs, menus, tool tips and panels are not.
bool canBecomeMain(const QWindow& window)
{
    return window.type() == Qt::Window && window.transientParent() == nullptr;
}

QCoro::Task<> recycleAndQuit(Workspace& workspace, QString bundle)
{
    co_await workspace.recycle(bundle);
    QCoreApplication::quit();
}

} // namespace

template <typename Thing>
std::unique_ptr<Thing> Windows::make(const char* entryPoint)
{
    auto thing = _library.make<Thing>(entryPoint, _forWindows);
    if (!thing) {
        showAlert(tr("The window cannot be opened. %1").arg(_library.errorText()));
    }
    return thing;
}

Windows::Windows(WindowsCollaborators collaborators, QObject* parent)
    : QObject(parent),
      _with(std::move(collaborators)),
      _forWindows{.model = _with.model,
                  .service = _with.service,
                  .commandLineTool = _with.commandLineTool,
                  .workspace = _with.workspace,
                  .settingsPages = _with.settingsPages,
                  .volumes = _with.volumes,
                  .registry = _with.registry,
                  .diagnostics = _with.diagnostics,
                  .host = *this,
                  .home = _with.home},
      _folderChooser(FolderChooser::make()),
      _updates([this] { return make<UpdateInterface>("ferrobankMakeUpdateWindow"); })
{}

Windows::~Windows() = default;

void Windows::openMain(const QString& activationToken)
{
    if (!_main) {
        _main = make<MainWindow>("ferrobankMakeMainWindow");
    }
    if (_main) {
        _main->open(activationToken);
    }
}

void Windows::openLoginItems()
{
    if (!_loginItems) {
        _loginItems = make<MainWindow>("ferrobankMakeLoginItemsWindow");
    }
    if (_loginItems) {
        _loginItems->open({});
    }
}

bool Windows::mainIsVisible() const
{
    return _main && _main->isVisible();
}

void Windows::showAlert(const QString& text)
{
    ferrobank::showAlert(text, frontWindow());
}

QCoro::Task<bool> Windows::askToGoOn(QString text)
{
    return ferrobank::askToGoOn(text, frontWindow());
}

void Windows::chooseFolder(std::function<void(QString)> chosen)
{
    _folderChooser->choose({.title = tr("Choose a Folder"),
                            .confirm = tr("Copy Here"),
                            .folder = _with.home,
                            .parent = frontWindow()},
                           std::move(chosen));
}

void Windows::quit()
{
    QCoreApplication::quit();
}

void Windows::trashAndQuit()
{
    spawn(this, recycleAndQuit(_with.workspace, _with.bundle));
}

void Windows::windowClosed()
{
    // The window that tells it is still on the stack.
    QTimer::singleShot(0, this, [this] {
        if (_main && _main->window() == nullptr) {
            _main.reset();
        }
        if (_loginItems && _loginItems->window() == nullptr) {
            _loginItems.reset();
        }
        returnFreeMemory();
        Q_EMIT closed();
    });
}

QWindow* Windows::frontWindow() const
{
    if (_main && _main->isVisible()) {
        return _main->window();
    }
    return _loginItems && _loginItems->isVisible() ? _loginItems->window() : nullptr;
}

std::vector<WindowFacts> presentWindows()
{
    std::vector<WindowFacts> facts;
    for (const QWindow* window : QGuiApplication::topLevelWindows()) {
        facts.push_back({.visible = window->isVisible(), .canBecomeMain = canBecomeMain(*window)});
    }
    return facts;
}

} // namespace ferrobank
