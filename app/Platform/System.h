#pragma once

#include <QtCore/QString>

#include <functional>
#include <memory>

namespace ferrobank {

class Clock;
class Defaults;
class LoginItemRegistry;
class PrivilegedLink;
class SettingsPages;
class UpdateController;
class UpdateDelegate;
class Volumes;
class Workspace;

/// This system's side of every ability that the application needs, made once for the life of the process. Main
/// thread, after the application object.
class System {
public:
    /// What only the application itself can do for the system's side. May be called at any time.
    struct Hooks {
        std::function<void()> openLoginItems;
        std::function<void(const QString& text)> tell; ///< one sentence for the user, as a last resort
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

    /// The system's updater, started. `delegate` must outlive it.
    [[nodiscard]] virtual std::unique_ptr<UpdateController> makeUpdateController(UpdateDelegate& delegate) = 0;
};

} // namespace ferrobank
