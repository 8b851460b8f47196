#pragma once

#include "Ferrobank/Model/CheckItemModel.h"
#include "Ferrobank/Views/MainWindow.h"

#include <QtCore/QObject>
#include <QtQml/qqmlregistration.h>

namespace ferrobank {

/// Which buttons the setup page offers. Plain value; `of` is pure.
///
/// | the first that holds | buttons |
/// |----------------------|----------------------------------------------------------------------------------|
/// | setup is done        | Continue | | a row failed         | Open Login Items (approval is missing), Open
/// Privacy Settings (mount), Try Again | | otherwise            | none |
struct SetupButtons {
    bool proceed = false;
    bool openLoginItems = false;
    bool openPrivacySettings = false;
    bool tryAgain = false;

    enum class Outcome { Working, SomethingFailed, Done };

    static SetupButtons of(Outcome outcome, bool needsApproval, bool mountFailed);

    friend bool operator==(const SetupButtons&, const SetupButtons&) = default;
};

/// The onboarding's five pages: what they show beyond their fixed words, and what their buttons do. Main
/// thread; lives as long as the window. Keeps no state: the step and the choices are the model's.
class OnboardingPresenter : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window")

    Q_PROPERTY(bool menuAtLogin READ menuAtLogin WRITE setMenuAtLogin NOTIFY choicesChanged)
    Q_PROPERTY(bool installCLI READ installCLI WRITE setInstallCLI NOTIFY choicesChanged)

    Q_PROPERTY(ferrobank::CheckItemModel* setupTasks READ setupTasks CONSTANT)
    Q_PROPERTY(bool offersContinue READ offersContinue NOTIFY buttonsChanged)
    Q_PROPERTY(bool offersLoginItems READ offersLoginItems NOTIFY buttonsChanged)
    Q_PROPERTY(bool offersPrivacySettings READ offersPrivacySettings NOTIFY buttonsChanged)
    Q_PROPERTY(bool offersTryAgain READ offersTryAgain NOTIFY buttonsChanged)

    Q_PROPERTY(ferrobank::CheckItemModel* checks READ checks CONSTANT)
    Q_PROPERTY(bool checksPassed READ checksPassed NOTIFY checksPassedChanged)

public:
    explicit OnboardingPresenter(const WindowCollaborators& with);

    [[nodiscard]] bool menuAtLogin() const;
    void setMenuAtLogin(bool value);
    [[nodiscard]] bool installCLI() const;
    void setInstallCLI(bool value);

    [[nodiscard]] CheckItemModel* setupTasks() const;

    [[nodiscard]] bool offersContinue() const { return _buttons.proceed; }

    [[nodiscard]] bool offersLoginItems() const { return _buttons.openLoginItems; }

    [[nodiscard]] bool offersPrivacySettings() const { return _buttons.openPrivacySettings; }

    [[nodiscard]] bool offersTryAgain() const { return _buttons.tryAgain; }

    [[nodiscard]] CheckItemModel* checks() const;
    [[nodiscard]] bool checksPassed() const;

    Q_INVOKABLE void leaveWelcome();
    Q_INVOKABLE void allowAndSetUp();
    Q_INVOKABLE void openLoginItems();
    Q_INVOKABLE void openPrivacySettings();
    Q_INVOKABLE void tryAgain();
    Q_INVOKABLE void leaveSetup();
    Q_INVOKABLE void fix(ferrobank::FixActions::Action action);
    Q_INVOKABLE void runChecksAgain();

    /// Records that setup is finished.
    Q_INVOKABLE void leaveVerify();

    Q_INVOKABLE void openDashboard();

Q_SIGNALS:
    void choicesChanged();
    void buttonsChanged();
    void checksPassedChanged();

private:
    void updateButtons();
    void askForApproval();

    WindowCollaborators _with;
    SetupButtons _buttons;
};

} // namespace ferrobank
