#pragma once

#include "Platform/UpdateController.h"

#include <functional>
#include <memory>
#include <vector>

namespace ferrobank {

/// What the decision needs to know about one window of the application.
struct WindowFacts {
    bool visible = false;
    bool canBecomeMain = false; ///< false for panels, menus, notifications

    friend bool operator==(const WindowFacts&, const WindowFacts&) = default;
};

/// Whether a downloaded update may be installed at once instead of when the user quits: setup is finished and
/// no window is on screen that the user may be working in. Pure.
[[nodiscard]] bool mayInstallUpdateNow(bool setupComplete, const std::vector<WindowFacts>& windows);

/// What the Updater asks and is made of. The functions must stay callable as long as it lives.
struct UpdaterCollaborators {
    /// Makes the system's controller, started, with this delegate.
    std::function<std::unique_ptr<UpdateController>(UpdateDelegate&)> makeController;
    std::function<bool()> setupComplete;
    std::function<std::vector<WindowFacts>()> windows; ///< in order
};

/// Software updates: owns the system's controller and decides when an update may be installed at once. A
/// program that lives beside the clock is rarely quit; without this rule updates would wait for ever.
///
/// One instance a process, made when the application starts and never released. Main thread only: the
/// decision stops the program when it is taken elsewhere.
class Updater final : public UpdateDelegate {
public:
    explicit Updater(UpdaterCollaborators collaborators);

    Updater(const Updater&) = delete;
    Updater& operator=(const Updater&) = delete;

    /// The menu's "Check for Updates…".
    void checkForUpdates();

    /// Tell it when a window has closed or setup was finished: an update that waits is offered again.
    void reconsider();

    bool willInstallUpdateOnQuit(const UpdateItem& item,
                                 std::function<void()> immediateInstallationBlock) override;

private:
    UpdaterCollaborators _collaborators;
    std::unique_ptr<UpdateController> _controller; ///< empty only during construction
};

} // namespace ferrobank
