#pragma once

#include <memory>

namespace ferrobank {

class SingleInstance;
class StatusItem;
class SystemChanges;

/// The program's place in the user's desktop session. One for the life of the process, main thread. Made
/// before anything of the window system; attach() comes after it.
class DesktopSession {
public:
    virtual ~DesktopSession() = default;

    static std::unique_ptr<DesktopSession> open();

    [[nodiscard]] virtual SingleInstance& instance() = 0;

    /// From here on the session is served from the event loop of the calling thread.
    virtual void attach() = 0;

    /// The rest needs attach() first. What is made must go before the session.
    [[nodiscard]] virtual std::unique_ptr<StatusItem> makeStatusItem() = 0;
    [[nodiscard]] virtual std::unique_ptr<SystemChanges> watchSystem() = 0;
};

} // namespace ferrobank
