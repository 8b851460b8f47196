#include "Ferrobank/FerrobankApp/Windows.h"

#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/CLI/CommandLineTool.h"
#include "Ferrobank/FerrobankApp/Alerts.h"
#include "Platform/Bundle.h"
#include "Platform/Latch.h"
#include "Platform/Memory.h"
#include "Platform/Workspace.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTimer>
#include <QtGui/QGuiApplication>
#include <QtGui/QWindow>

#include <chrono>
#include <filesystem>
#include <utility>
#include <vector>

namespace ferrobank {

namespace {

/// After this a window has done what is done once: read its parts, drawn them, run the first checks.
constexpr std::chrono::seconds kSettled{3};

/// A document window; dialogs, menus, tool tips and panels are not.
bool canBecomeMain(const QWindow& window)
{
    return window.type() == Qt::Window && window.transientParent() == nullptr;
}

/// Whether all of it is in the Trash.
QCoro::Task<bool> recycle(Workspace& workspace, std::vector<std::filesystem::path> copy)
{
    bool all = true;
    for (const std::filesystem::path& path : copy) {
        const bool moved = co_await workspace.recycle(QString::fromStdString(path.native()));
        all = all && moved;
    }
    co_return all;
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
                  .loginServices = _with.loginServices,
                  .commandLineTool = _with.commandLineTool,
                  .workspace = _with.workspace,
                  .settingsPages = _with.settingsPages,
                  .volumes = _with.volumes,
                  .diagnostics = _with.diagnostics,
                  .host = *this,
                  .home = _with.home},
      _folderChooser(FolderChooser::make()),
      _updates([this] { return make<UpdateInterface>("ferrobankMakeUpdateWindow"); })
{
    _settled.setSingleShot(true);
    _settled.setInterval(kSettled);
    _settled.callOnTimeout(returnIdleMemory);
}

Windows::~Windows() = default;

void Windows::openMain(const QString& activationToken)
{
    if (!_main) {
        _main = make<MainWindow>("ferrobankMakeMainWindow");
    }
    if (_main) {
        _main->open(activationToken);
        _settled.start();
    }
}

void Windows::openLoginItems()
{
    if (!_loginItems) {
        _loginItems = make<MainWindow>("ferrobankMakeLoginItemsWindow");
    }
    if (_loginItems) {
        _loginItems->open({});
        _settled.start();
    }
}

bool Windows::mainIsVisible() const
{
    return _main && _main->isVisible();
}

bool Windows::show(const Message& message, std::function<void(bool)> answered)
{
    auto window = _library.make<MessageWindow>("ferrobankMakeMessageWindow", _forWindows);
    if (!window) {
        return false;
    }
    MessageWindow& shown = *window;
    _messages.push_back(std::move(window));
    shown.show(message, frontWindow(), std::move(answered));
    return true;
}

void Windows::showAlert(const QString& text)
{
    if (!show({Message::Kind::Alert, text}, nullptr)) {
        ferrobank::showAlert(text, frontWindow());
    }
}

QCoro::Task<bool> Windows::askToGoOn(QString text)
{
    const auto goesOn = std::make_shared<bool>(false);
    Latch over;
    const auto answered = [goesOn, over](bool answer) mutable {
        *goesOn = answer;
        over.open();
    };
    const Message message{Message::Kind::Question, text};
    const bool isShown = show(message, answered);
    if (!isShown) {
        QWindow* const front = frontWindow();
        const bool answer = co_await ferrobank::askToGoOn(text, front);
        co_return answer;
    }
    co_await over.wait();
    co_return *goesOn;
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
    spawn(this, recycleEverythingAndQuit());
}

QCoro::Task<> Windows::recycleEverythingAndQuit()
{
    std::vector<std::filesystem::path> copy = Bundle::main().wholeCopy();
    const bool isGone = co_await recycle(_with.workspace, std::move(copy));
    // The command would lead nowhere. Where it takes a password to remove it, that is the user's to decide.
    if (isGone && _with.commandLineTool.remove() == CommandLineTool::Removal::Refused) {
        const QString link = _with.commandLineTool.link();
        const QString words =
            tr("Ferrobank is in the Trash. The command %1 is still there, because removing it needs "
               "an administrator's password. To remove it: sudo rm %1")
                .arg(link);
        if (show({Message::Kind::Alert, words}, [](bool) { QCoreApplication::quit(); })) {
            co_return;
        }
    }
    QCoreApplication::quit();
}

void Windows::windowClosed()
{
    // The window that tells it is still on the stack.
    QTimer::singleShot(0, this, [this] {
        const bool mainIsGone = _main && _main->window() == nullptr;
        if (mainIsGone) {
            _main.reset();
        }
        if (_loginItems && _loginItems->window() == nullptr) {
            _loginItems.reset();
        }
        std::erase_if(_messages, [](const auto& message) { return !message->isOpen(); });
        _settled.stop();
        returnIdleMemory();
        if (mainIsGone) {
            Q_EMIT mainClosed();
        }
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
