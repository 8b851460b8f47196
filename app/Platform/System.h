#pragma once

#include <QCoro/QCoroTask>
#include <QtCore/QString>

#include <functional>
#include <memory>

namespace ferrobank {

class Clock;
class Defaults;
class LoginItemRegistry;
class PrivilegedLink;
class SettingsPages;
class SystemReport;
class UpdateController;
class UpdateDelegate;
class UpdateInterface;
class Volumes;
class Workspace;

/// This system's side of every ability that the application needs, made once for the life of the process.
/// Main thread, after the application object.
class System {
public:
    /// What only the application itself can do for the system's side. May be called at any time.
    struct Hooks {
        std::function<void()> openLoginItems;

        /// One sentence for the user, where nothing on this desktop could do what was asked for.
        std::function<void(QString text)> tell;

        /// What the user is about to be asked for, and whether to go on.
        std::function<QCoro::Task<bool>(QString text)> explain;

        /// A token of the user's last click, good for the window of another program; empty where there is
        /// none.
        std::function<QString()> activationToken;

        std::function<void()> quit;
    };

    static std::unique_ptr<System> make(Hooks hooks);

    virtual ~System() = default;

    [[nodiscard]] virtual LoginItemRegistry& registry() = 0;
    [[nodiscard]] virtual Workspace& workspace() = 0;
    [[nodiscard]] virtual SettingsPages& settingsPages() = 0;
    [[nodiscard]] virtual PrivilegedLink& privilegedLink() = 0;
    [[nodiscard]] virtual Defaults& defaults() = 0;
    [[nodiscard]] virtual Volumes& volumes() = 0;
    [[nodiscard]] virtual Clock& clock() = 0;
    [[nodiscard]] virtual SystemReport& report() = 0;

    /// The system's updater, started. Delegate and interface must outlive it.
    [[nodiscard]] virtual std::unique_ptr<UpdateController>
    makeUpdateController(UpdateDelegate& delegate, UpdateInterface& interface) = 0;
};

} // namespace ferrobank
