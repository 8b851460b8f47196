#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

#include <functional>
#include <optional>

namespace ferrobank {

/// What a button of the update window stands for.
enum class UpdateAction {
    Close,
    Cancel,
    Install,            ///< download and prepare
    InstallAndRelaunch, ///< replace this version now
    Relaunch,           ///< start the version that somebody else has installed
    RemindLater,
    Skip,
    OpenPage,    ///< the page of the update
    ShowHistory, ///< the page of all versions
    AllowAutomatic,
    DeclineAutomatic
};

struct UpdateButton {
    UpdateAction action = UpdateAction::Close;
    QString text;

    friend bool operator==(const UpdateButton&, const UpdateButton&) = default;
};

/// The update window as data: what it shows at one moment. Plain value; all texts are plain text.
struct UpdatePrompt {
    QString headline;
    QString text;
    QString notes;                  ///< release notes; empty for none
    bool isBusy = false;            ///< shows a bar
    std::optional<double> progress; ///< 0 to 1; a busy bar without it when there is none
    QString automaticTitle;         ///< title of the check box; empty for none
    bool automatic = false;         ///< its state
    QList<UpdateButton> buttons;    ///< the first is the default one

    /// The button for Escape and the window's close control.
    UpdateAction dismiss = UpdateAction::Close;

    friend bool operator==(const UpdatePrompt&, const UpdatePrompt&) = default;
};

/// Where the updater meets the user. Main thread. `act` and `automaticChanged` are set by whoever shows
/// prompts and called from the event loop, never from inside a call to the interface.
class UpdateInterface {
public:
    virtual ~UpdateInterface() = default;

    /// Opens the window with this content, or changes the open one's. Only a window that opens anew takes the
    /// focus.
    virtual void show(const UpdatePrompt& prompt) = 0;

    /// Brings the open window to the front.
    virtual void raise() = 0;

    virtual void close() = 0;

    std::function<void(UpdateAction)> act;
    std::function<void(bool)> automaticChanged;
};

} // namespace ferrobank
