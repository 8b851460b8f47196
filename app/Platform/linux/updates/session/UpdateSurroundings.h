#pragma once

#include <QtCore/QString>

#include <functional>

namespace ferrobank::updates {

/// What the updater says beyond its window. Main thread. `openUpdate` is set by the updater and called from
/// the event loop.
class UpdateSurroundings {
public:
    virtual ~UpdateSurroundings() = default;

    /// A notification that never takes the focus; a click on it leads to openUpdate(). One replaces the last.
    /// Where nobody shows notifications nothing happens.
    virtual void notify(const QString& title, const QString& text) = 0;

    /// Opens a page in the user's browser.
    virtual void openPage(const QString& url) = 0;

    std::function<void()> openUpdate;
};

} // namespace ferrobank::updates
