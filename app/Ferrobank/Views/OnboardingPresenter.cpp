#include "Ferrobank/Views/OnboardingPresenter.h"

#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/LoginServices.h"
#include "Ferrobank/Model/AppModel.h"
#include "Platform/SettingsPages.h"

namespace ferrobank {

SetupButtons SetupButtons::of(Outcome outcome, bool needsApproval, bool mountFailed)
{
    SetupButtons buttons;
    switch (outcome) {
    case Outcome::Working:
        break;
    case Outcome::SomethingFailed:
        buttons.openLoginItems = needsApproval;
        buttons.openPrivacySettings = mountFailed;
        buttons.tryAgain = true;
        break;
    case Outcome::Done:
        buttons.proceed = true;
        break;
    }
    return buttons;
}

OnboardingPresenter::OnboardingPresenter(const WindowCollaborators& with) : _with(with)
{
    AppModel* model = &_with.model;
    connect(model, &AppModel::choicesChanged, this, &OnboardingPresenter::choicesChanged);
    connect(model, &AppModel::checksPassedChanged, this, &OnboardingPresenter::checksPassedChanged);
    connect(model, &AppModel::setupTasksChanged, this, &OnboardingPresenter::updateButtons);
    connect(model, &AppModel::setupDoneChanged, this, &OnboardingPresenter::updateButtons);
    connect(model, &AppModel::screenChanged, this, &OnboardingPresenter::updateButtons);
    // The registry tells nobody of an approval; each change of a row and each poll is an occasion to ask.
    connect(model, &AppModel::setupTasksChanged, this, &OnboardingPresenter::askForApproval);
    connect(model, &AppModel::statusChanged, this, &OnboardingPresenter::askForApproval);
    connect(&_with.loginServices, &LoginServices::changed, this, &OnboardingPresenter::updateButtons);
    updateButtons();
    askForApproval();
}

bool OnboardingPresenter::menuAtLogin() const
{
    return _with.model.choices().menuAtLogin;
}

void OnboardingPresenter::setMenuAtLogin(bool value)
{
    SetupChoices choices = _with.model.choices();
    choices.menuAtLogin = value;
    _with.model.setChoices(choices);
}

bool OnboardingPresenter::installCLI() const
{
    return _with.model.choices().installCLI;
}

void OnboardingPresenter::setInstallCLI(bool value)
{
    SetupChoices choices = _with.model.choices();
    choices.installCLI = value;
    _with.model.setChoices(choices);
}

CheckItemModel* OnboardingPresenter::setupTasks() const
{
    return _with.model.setupTaskRows();
}

CheckItemModel* OnboardingPresenter::checks() const
{
    return _with.model.checkRows();
}

bool OnboardingPresenter::checksPassed() const
{
    return _with.model.checksPassed();
}

void OnboardingPresenter::updateButtons()
{
    using Outcome = SetupButtons::Outcome;
    Outcome outcome = Outcome::Working;
    if (_with.model.setupDone()) {
        outcome = Outcome::Done;
    } else if (_with.model.setupTaskRows()->countOf(CheckItem::State::Fail) > 0) {
        outcome = Outcome::SomethingFailed;
    }
    const bool needsApproval =
        outcome == Outcome::SomethingFailed && _with.loginServices.isKnownToNeedApproval();
    const auto buttons = SetupButtons::of(outcome, needsApproval, _with.model.mountFailed());
    if (_buttons != buttons) {
        _buttons = buttons;
        Q_EMIT buttonsChanged();
    }
}

void OnboardingPresenter::askForApproval()
{
    if (_buttons.tryAgain) {
        _with.loginServices.look(LoginService::MainApp);
        _with.loginServices.look(LoginService::Agent);
    }
}

void OnboardingPresenter::leaveWelcome()
{
    _with.model.setScreen(Screen::onboarding(Screen::Consent));
}

void OnboardingPresenter::allowAndSetUp()
{
    _with.model.setScreen(Screen::onboarding(Screen::Setup));
    spawn(&_with.model, _with.model.runSetup());
}

void OnboardingPresenter::openLoginItems()
{
    _with.loginServices.openSystemSettingsLoginItems();
}

void OnboardingPresenter::openPrivacySettings()
{
    _with.settingsPages.open(SettingsPage::FilesAndFolders);
}

void OnboardingPresenter::tryAgain()
{
    spawn(&_with.model, _with.model.runSetup());
}

void OnboardingPresenter::leaveSetup()
{
    _with.model.setScreen(Screen::onboarding(Screen::Verify));
    spawn(&_with.model, _with.model.runChecks());
}

void OnboardingPresenter::fix(FixActions::Action action)
{
    spawn(&_with.model, _with.model.fix(action));
}

void OnboardingPresenter::runChecksAgain()
{
    spawn(&_with.model, _with.model.runChecks());
}

void OnboardingPresenter::leaveVerify()
{
    if (!_with.model.recordSetupComplete()) {
        qWarning("The end of the setup could not be written to disk");
    }
    _with.model.setScreen(Screen::onboarding(Screen::Done));
}

void OnboardingPresenter::openDashboard()
{
    _with.model.setScreen(Screen::dashboard());
}

} // namespace ferrobank
