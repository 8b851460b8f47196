#pragma once

#include <QtCore/QString>

#include <functional>

namespace ferrobank {

/// The update that a decision is about. Plain value.
struct UpdateItem {
    QString version;        ///< what is compared, for example "1.0.1"
    QString displayVersion; ///< what the user reads

    friend bool operator==(const UpdateItem&, const UpdateItem&) = default;
};

/// Whoever decides for the application. Called on the main thread.
class UpdateDelegate {
public:
    virtual ~UpdateDelegate() = default;

    /// An update is downloaded, verified and will be installed when the application quits. Returning true
    /// takes over the responsibility; `immediateInstallationBlock` may then be called, before or after
    /// returning: it installs without any window and starts the new version. Returning false leaves it to the
    /// controller, which asks again after UpdateController::reconsider() and at its next scheduled check.
    virtual bool willInstallUpdateOnQuit(const UpdateItem& item,
                                         std::function<void()> immediateInstallationBlock) = 0;
};

/// The system's own updater: schedule, feed, download, installation and its dialogs. Main thread.
///
/// Started by whoever makes it; everything about feed, keys and schedule comes from the bundle's property
/// list and the user's preferences.
class UpdateController {
public:
    virtual ~UpdateController() = default;

    /// The user asks. Always answers in a window; a session that has one already only raises it.
    virtual void checkForUpdates() = 0;

    /// What may have made the delegate refuse has changed: a window closed, or setup was finished.
    virtual void reconsider() = 0;
};

} // namespace ferrobank
