#pragma once

#include "Ferrobank/Async/Lifeline.h"
#include "Ferrobank/CLI/CheckItem.h"
#include "Ferrobank/CLI/DriveStatus.h"
#include "Ferrobank/Model/CheckItemModel.h"
#include "Ferrobank/Model/Screen.h"

#include <QCoro/QCoroTask>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <chrono>
#include <optional>

namespace ferrobank {

class CLI;
class Clock;
class CommandLineTool;
class Defaults;
class LoginServices;
class SettingsPages;
class Volumes;
class Workspace;

/// The user's two answers on the consent page.
struct SetupChoices {
    Q_GADGET
    Q_PROPERTY(bool menuAtLogin MEMBER menuAtLogin)
    Q_PROPERTY(bool installCLI MEMBER installCLI)

public:
    bool menuAtLogin = true;
    bool installCLI = true;

    friend bool operator==(const SetupChoices&, const SetupChoices&) = default;
};

/// What the model works with. References must outlive the model.
struct ModelCollaborators {
    CLI& cli;
    LoginServices& loginServices;
    CommandLineTool& commandLineTool;
    Workspace& workspace;
    SettingsPages& settingsPages;
    Defaults& defaults;
    Volumes& volumes;
    Clock& clock;
    QString home;       ///< the user's home folder, absolute
    QString volumeIcon; ///< the bundle's icon image for the volume
};

/// Everything that the screens show, and every operation behind them.
///
/// One instance a process, on the main thread. Operations never throw: a failure becomes state with the words
/// to show. They may overlap at their waits; each re-reads the state after every wait.
///
/// Every change is told by the property's signal, except the assignment of an equal value to any property but
/// `status`, which is silent.
///
/// The end: operations that still wait when the model is destroyed are not cut short. They end without
/// touching anything as soon as what they wait for comes, at the latest when the collaborators go away.
class AppModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(ferrobank::Screen screen READ screen WRITE setScreen NOTIFY screenChanged)
    Q_PROPERTY(ferrobank::SetupChoices choices READ choices WRITE setChoices NOTIFY choicesChanged)
    Q_PROPERTY(ferrobank::CheckItemModel* setupTaskRows READ setupTaskRows CONSTANT)
    Q_PROPERTY(ferrobank::CheckItemModel* checkRows READ checkRows CONSTANT)
    Q_PROPERTY(bool setupDone READ setupDone NOTIFY setupDoneChanged)
    Q_PROPERTY(bool mountFailed READ mountFailed NOTIFY mountFailedChanged)
    Q_PROPERTY(bool checksRunning READ checksRunning NOTIFY checksRunningChanged)
    Q_PROPERTY(bool checksPassed READ checksPassed NOTIFY checksPassedChanged)
    Q_PROPERTY(
        bool menuOpensAtLogin READ menuOpensAtLogin WRITE setMenuOpensAtLogin NOTIFY menuOpensAtLoginChanged)

public:
    /// Progress of an uninstall. Plain value; the text belongs to Done and Failed.
    struct UninstallState {
        enum class Kind { Idle, Running, Done, Failed };

        Kind kind = Kind::Idle;
        QString text;

        friend bool operator==(const UninstallState&, const UninstallState&) = default;
    };

    /// Begins to ask for the login services. The first screen follows the record of the setup, and once the
    /// agent's state is known that, too. The start-up task and the status poll begin with the next turn of
    /// the event loop.
    explicit AppModel(ModelCollaborators collaborators, QObject* parent = nullptr);
    ~AppModel() override;

    [[nodiscard]] const std::optional<DriveStatus>& status() const { return _status; }

    [[nodiscard]] Screen screen() const { return _screen; }

    void setScreen(Screen screen);

    [[nodiscard]] SetupChoices choices() const { return _choices; }

    void setChoices(SetupChoices choices);

    [[nodiscard]] const QList<CheckItem>& setupTasks() const { return _setupTasks->rows(); }

    [[nodiscard]] const QList<CheckItem>& checks() const { return _checks->rows(); }

    /// The same rows for screens: changes come row by row. Owned by the model.
    [[nodiscard]] CheckItemModel* setupTaskRows() const { return _setupTasks; }

    [[nodiscard]] CheckItemModel* checkRows() const { return _checks; }

    [[nodiscard]] bool checksRunning() const { return _checksRunning; }

    [[nodiscard]] bool menuOpensAtLogin() const { return _menuOpensAtLogin; }

    /// Stores the user's wish and, where the system disagrees, registers or unregisters the login item in the
    /// background. A registry that refuses is ignored here; the next refresh() shows the truth.
    void setMenuOpensAtLogin(bool value);

    [[nodiscard]] const UninstallState& uninstallState() const { return _uninstallState; }

    /// Whether setup was finished and the agent is enabled, as far as that is known: a service manager that
    /// does not answer does not undo a setup.
    [[nodiscard]] bool setupComplete() const;

    /// setupComplete() rests on an answer. From false it becomes true once, with setupKnown().
    [[nodiscard]] bool isSetupKnown() const;

    /// Asks for the agent anew where setup is recorded; setupCompleteChanged() tells if that makes a
    /// difference.
    void lookAtSetup();

    /// Records that setup is finished. The result tells whether that reached the disk.
    bool recordSetupComplete();

    /// Re-reads the drive's status and the login setting. A status that cannot be read keeps the old one.
    QCoro::Task<> refresh();

    /// Runs the health checks once; returns at once while a run is in progress.
    QCoro::Task<> runChecks();

    /// There are rows, none is still at work, and every one passed.
    [[nodiscard]] bool checksPassed() const;

    /// The setup's "mount" row failed.
    [[nodiscard]] bool mountFailed() const;

    /// Carries out one remedy. Settings pages open at once; a restart ends in a run of the checks.
    QCoro::Task<> fix(FixAction action);

    /// The rows of a setup run, all pending, from the present choices.
    [[nodiscard]] QList<CheckItem> freshSetupTasks() const;

    /// Every setup row is finished; a failed command install counts as finished.
    [[nodiscard]] bool setupDone() const;

    /// The setup step of the "cli" row.
    QCoro::Task<> installCommandLineTool();

    /// Walks the setup rows to the end or to the first failure.
    QCoro::Task<> runSetup();

    /// `exportTo` is the folder that receives a copy of the drive's files, if any.
    QCoro::Task<> uninstall(std::optional<QString> exportTo, bool deleteData);

    /// The model's coroutines, for tests: none may be lost.
    [[nodiscard]] const Lifeline& lifeline() const { return _lifeline; }

Q_SIGNALS:
    void statusChanged(); ///< after every successful read, also of an equal status
    void screenChanged();
    void choicesChanged();
    void setupTasksChanged(); ///< once for each changed row
    void setupDoneChanged();
    void mountFailedChanged();
    void checksChanged(); ///< once for each changed row
    void checksRunningChanged();
    void checksPassedChanged();
    void menuOpensAtLoginChanged();
    void uninstallStateChanged();
    void setupCompleteChanged(); ///< the record was written, or another state of the agent was learned
    void setupKnown();

private:
    /// What a screen may have read last, so that a derived value is only told when it is another one.
    struct Derived {
        bool setupDone = false;
        bool mountFailed = false;
        bool checksPassed = false;
        bool setupComplete = false;
    };

    /// What one look during the wait for the drive has found.
    enum class MountWait { GoesOn, Mounted, Failed };

    QCoro::Task<> startUp();
    QCoro::Task<> pollStatus();
    QCoro::Task<> ensureVolumeIcon(QString mountpoint);
    QCoro::Task<bool> isFirstRun();
    QCoro::Task<> runIgnoringFailure(QStringList args);

    [[nodiscard]] bool isMounted() const { return _status && _status->mounted; }

    void setStatus(DriveStatus status);
    QCoro::Task<> learnLoginServices();
    QCoro::Task<> learnAgent();
    void followLoginServices();
    QCoro::Task<> readLoginSetting();
    void storeMenuOpensAtLogin(bool value);
    QCoro::Task<> matchLoginItem(bool wish);
    [[nodiscard]] bool isSetupRecorded() const;
    bool writeSetupRecord(bool complete);
    void tellDerived();

    QCoro::Task<std::optional<QString>> streamChecks();
    void applyCheckLine(const QString& line);
    void setChecksRunning(bool running);
    void changeChecks(bool changed);
    QCoro::Task<> restartDrive();
    QCoro::Task<bool> isAgentRegistered();
    QCoro::Task<> registerIgnoringFailure();

    // The steps of the setup run; each tells whether the run goes on.
    QCoro::Task<bool> setUpLogin();
    QCoro::Task<bool> awaitApproval();
    QCoro::Task<bool> setUpMount(bool firstRun);
    QCoro::Task<bool> setUpFinder();
    MountWait lookAtMount(std::chrono::system_clock::duration waited);
    void updateSetupTask(const QString& id, CheckItem::State state, std::optional<QString> detail = {},
                         std::optional<QString> fix = {});
    void changeSetupTasks(bool changed);
    static CheckItem pendingRow(const QString& id, const QString& title);

    [[nodiscard]] QString uninstalledText(const std::optional<QString>& exportTo, bool deleteData) const;
    void setUninstallState(UninstallState state);

    ModelCollaborators _with;
    std::optional<DriveStatus> _status;
    Screen _screen;
    SetupChoices _choices;
    CheckItemModel* _setupTasks;
    CheckItemModel* _checks;
    bool _checksRunning = false;
    bool _menuOpensAtLogin = false;
    int _loginWishes = 0; ///< how many there ever were
    bool _learnsAgent = false;
    bool _setupWasKnown = false;
    UninstallState _uninstallState;
    Derived _told;
    Lifeline _lifeline;
};

} // namespace ferrobank
