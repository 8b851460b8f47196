#pragma once

#include "Ferrobank/Dashboard/DashboardPresenter.h"
#include "Ferrobank/Model/Screen.h"
#include "Ferrobank/Views/ChecksPresenter.h"
#include "Ferrobank/Views/OnboardingPresenter.h"
#include "Ferrobank/Views/UninstallPresenter.h"

namespace ferrobank {

/// What the main window shows: the model's screen, its width, and the presenters of the four screens. Main
/// thread; made when the window opens and gone when it closes.
class RootPresenter : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window")

    /// One of AppScreen.Kind.
    Q_PROPERTY(int screen READ screen NOTIFY screenChanged)
    Q_PROPERTY(int step READ step NOTIFY screenChanged)
    Q_PROPERTY(int contentWidth READ contentWidth NOTIFY screenChanged)
    Q_PROPERTY(ferrobank::DashboardPresenter* dashboard READ dashboard CONSTANT)
    Q_PROPERTY(ferrobank::OnboardingPresenter* onboarding READ onboarding CONSTANT)
    Q_PROPERTY(ferrobank::ChecksPresenter* checks READ checks CONSTANT)
    Q_PROPERTY(ferrobank::UninstallPresenter* uninstall READ uninstall CONSTANT)

public:
    explicit RootPresenter(const WindowCollaborators& with);

    [[nodiscard]] Screen::Kind screen() const;

    /// The page of the onboarding.
    [[nodiscard]] Screen::Step step() const;

    /// In device-independent pixels, without the padding around it.
    [[nodiscard]] int contentWidth() const;

    [[nodiscard]] DashboardPresenter* dashboard() { return &_dashboard; }

    [[nodiscard]] OnboardingPresenter* onboarding() { return &_onboarding; }

    [[nodiscard]] ChecksPresenter* checks() { return &_checks; }

    [[nodiscard]] UninstallPresenter* uninstall() { return &_uninstall; }

Q_SIGNALS:
    void screenChanged();

private:
    AppModel& _model;
    DashboardPresenter _dashboard;
    OnboardingPresenter _onboarding;
    ChecksPresenter _checks;
    UninstallPresenter _uninstall;
};

} // namespace ferrobank
