#include "Ferrobank/FerrobankApp/TrayMenu.h"

#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/CLI/CommandLineTool.h"
#include "Ferrobank/Model/AppModel.h"
#include "Ferrobank/Model/FailureText.h"
#include "Platform/StatusItem.h"
#include "Platform/SystemChanges.h"
#include "Platform/Workspace.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace ferrobank {

TrayMenu::TrayMenu(TrayMenuCollaborators collaborators, QObject* parent)
    : QObject(parent), _with(std::move(collaborators))
{
    const auto everything = [this] { update(Read::Everything); };
    connect(&_with.model, &AppModel::statusChanged, this, [this] { update(Read::StatusOnly); });
    connect(&_with.model, &AppModel::screenChanged, this, everything);
    connect(&_with.model, &AppModel::menuOpensAtLoginChanged, this, everything);
    connect(&_with.model, &AppModel::setupCompleteChanged, this, everything);
    connect(&_with.model, &AppModel::uninstallStateChanged, this, everything);
    const auto askedAnew = [this] {
        update(Read::Everything);
        _with.model.lookAtSetup(); // what that finds is told by the model
    };
    connect(&_with.systemChanges, &SystemChanges::changed, this, askedAnew);
    connect(&_with.item, &StatusItem::aboutToShowMenu, this, askedAnew);
    connect(&_with.item, &StatusItem::chosen, this,
            [this](int entry, const QString& token) { choose(static_cast<MenuItem>(entry), token); });
    update(Read::Everything);
}

bool TrayMenu::choose(MenuItem item, const QString& activationToken)
{
    if (!offers(item)) {
        return false;
    }
    carryOut(item, activationToken);
    return true;
}

bool TrayMenu::offers(MenuItem item)
{
    update(Read::Everything);
    const QList<MenuEntry> entries = menuContent(*_facts);
    return std::any_of(entries.begin(), entries.end(), [item](const MenuEntry& entry) {
        return entry.id == static_cast<int>(item) &&
               (entry.kind == MenuEntry::Kind::Button || entry.kind == MenuEntry::Kind::Toggle);
    });
}

void TrayMenu::carryOut(MenuItem item, const QString& activationToken)
{
    AppModel& model = _with.model;
    _activationToken = activationToken;
    switch (item) {
    case MenuItem::State:
    case MenuItem::Usage:
    case MenuItem::StatusDivider:
    case MenuItem::Divider:
        return;
    case MenuItem::Open:
        openWindowAt(Screen::dashboard(), activationToken);
        return;
    case MenuItem::SetUp:
        openWindowAt(Screen::onboarding(Screen::Welcome), activationToken);
        return;
    case MenuItem::InstallCommand:
        // Its prompt may be open still; a second one would be put over the first.
        if (!_installingCommand) {
            _installingCommand = true;
            spawn(this, installCommand());
        }
        return;
    case MenuItem::CheckForUpdates:
        _with.checkForUpdates();
        return;
    case MenuItem::RunChecks:
        openWindowAt(Screen::checks(), activationToken);
        spawn(this, model.runChecks());
        return;
    case MenuItem::OpenAtLogin:
        model.setMenuOpensAtLogin(!model.menuOpensAtLogin());
        _with.item.repeatMenu();
        return;
    case MenuItem::ShowLog:
        showLog();
        return;
    case MenuItem::Uninstall:
        openWindowAt(Screen::uninstall(), activationToken);
        return;
    case MenuItem::Quit:
        _with.quit();
        return;
    }
}

void TrayMenu::update(Read read)
{
    MenuFacts facts = _facts.value_or(MenuFacts());
    facts.status = _with.model.status();
    facts.menuOpensAtLogin = _with.model.menuOpensAtLogin();
    if (read == Read::Everything) {
        facts.setupComplete = _with.model.setupComplete();
        facts.commandInstalled = _with.commandLineTool.isInstalled();
    }
    if (_facts == facts) {
        return;
    }
    _facts = std::move(facts);
    _with.item.setFace(menuFace(*_facts));
    _with.item.setMenu(menuContent(*_facts));
}

void TrayMenu::openWindowAt(const Screen& screen, const QString& activationToken)
{
    // Setting an equal screen is no change, and tells nobody.
    _with.model.setScreen(screen);
    _activationToken.clear();
    _with.openWindow(activationToken);
}

void TrayMenu::showLog()
{
    const std::optional<DriveStatus>& status = _with.model.status();
    if (status && !status->log.isEmpty()) {
        _with.workspace.openPath(status->log);
    }
}

QCoro::Task<> TrayMenu::installCommand()
{
    const auto life = _lifeline.hold();
    QString failure;
    try {
        co_await _with.commandLineTool.install();
    } catch (const CommandLineTool::Cancelled&) {
        // The user has just said so; there is nothing to tell.
    } catch (const std::exception& error) {
        failure = failureText(error);
    }
    if (life.isCut()) {
        co_return;
    }
    _installingCommand = false;
    update(Read::Everything);
    if (!failure.isEmpty()) {
        _with.showAlert(failure);
    }
}

} // namespace ferrobank
