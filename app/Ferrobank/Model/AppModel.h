#pragma once

#include "Ferrobank/CLI/CheckItem.h"
#include "Ferrobank/CLI/DriveStatus.h"
#include "Ferrobank/Model/Screen.h"

#include <QCoro/QCoroTask>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <optional>

namespace ferrobank {

class CheckItemModel;
class CLI;
class Clock;
class CommandLineTool;
class Defaults;
class Service;
class SettingsPages;
class Volumes;
class Workspace;

/// The user's two answers on the consent page.
struct SetupChoices {
    bool menuAtLogin = true;
    bool installCLI = true;

    friend bool operator==(const SetupChoices&, const SetupChoices&) = default;
};

/// What the model works with. References must outlive the model.
struct ModelCollaborators {
    CLI& cli;
    Service& service;
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
class AppModel : public QObject {
    Q_OBJECT

public:
    /// Progress of an uninstall. Plain value; the text belongs to Done and Failed.
    struct UninstallState {
        enum class Kind { Idle, Running, Done, Failed };

        Kind kind = Kind::Idle;
        QString text;

        friend bool operator==(const UninstallState&, const UninstallState&) = default;
    };

    /// Reads the login setting and the first screen, and starts the start-up task and the status poll.
    explicit AppModel(ModelCollaborators collaborators, QObject* parent = nullptr);
    ~AppModel() override;

    [[nodiscard]] const std::optional<DriveStatus>& status() const { return _status; }

    [[nodiscard]] Screen screen() const { return _screen; }

    void setScreen(Screen screen);

    [[nodiscard]] SetupChoices choices() const { return _choices; }

    void setChoices(SetupChoices choices);

    [[nodiscard]] const QList<CheckItem>& setupTasks() const;
    [[nodiscard]] const QList<CheckItem>& checks() const;

    /// The same rows for screens: changes come row by row. Owned by the model.
    [[nodiscard]] CheckItemModel* setupTaskRows() const { return _setupTasks; }

    [[nodiscard]] CheckItemModel* checkRows() const { return _checks; }

    [[nodiscard]] bool checksRunning() const { return _checksRunning; }

    [[nodiscard]] bool menuOpensAtLogin() const { return _menuOpensAtLogin; }

    /// Stores the user's wish and, where the system disagrees, registers or unregisters the login item.
    void setMenuOpensAtLogin(bool value);

    [[nodiscard]] const UninstallState& uninstallState() const { return _uninstallState; }

    /// Whether setup was finished and the agent is enabled; asked anew each time.
    [[nodiscard]] bool setupComplete() const;

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

    QCoro::Task<> fix(FixAction action);

    /// The rows of a setup run, all pending, from the present choices.
    [[nodiscard]] QList<CheckItem> freshSetupTasks() const;

    /// Every setup row is finished; a failed command install counts as finished.
    [[nodiscard]] bool setupDone() const;

    QCoro::Task<> installCommandLineTool();

    /// Walks the setup rows to the end or to the first failure.
    QCoro::Task<> runSetup();

    /// `exportTo` is the folder that receives a copy of the drive's files, if any.
    QCoro::Task<> uninstall(std::optional<QString> exportTo, bool deleteData);

Q_SIGNALS:
    void statusChanged(); ///< after every successful read, also of an equal status
    void screenChanged();
    void choicesChanged();
    void setupTasksChanged();
    void checksChanged();
    void checksRunningChanged();
    void menuOpensAtLoginChanged();
    void uninstallStateChanged();

private:
    ModelCollaborators _with;
    std::optional<DriveStatus> _status;
    Screen _screen;
    SetupChoices _choices;
    CheckItemModel* _setupTasks = nullptr;
    CheckItemModel* _checks = nullptr;
    bool _checksRunning = false;
    bool _menuOpensAtLogin = false;
    UninstallState _uninstallState;
};

} // namespace ferrobank
