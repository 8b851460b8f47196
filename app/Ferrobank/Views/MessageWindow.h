#pragma once

#include "Ferrobank/Views/MainWindow.h"

namespace ferrobank {

/// What a message says. Plain value; the words are plain text.
struct Message {
    enum class Kind {
        Alert,   ///< something went wrong; one button
        Question ///< to go on, or to leave it
    };

    Kind kind = Kind::Alert;
    QString text;
};

/// A modal message in a window of its own. Main thread; good for one message.
class MessageWindow {
public:
    virtual ~MessageWindow() = default;

    /// Shows it and returns at once. `parent` is the window in front of which it belongs; null when it stands
    /// alone. `answered` is called once, from the event loop: true when the user goes on, false when the
    /// message is left or closed. Not when the object is deleted before.
    virtual void show(const Message& message, QWindow* parent, std::function<void(bool)> answered) = 0;

    [[nodiscard]] virtual bool isOpen() const = 0;
};

} // namespace ferrobank

/// A further entry point of libferrobank-window, found by name. The caller owns the result and must not
/// outlive the library with it. Like every window it tells the host when it was closed.
extern "C" {
Q_DECL_EXPORT ferrobank::MessageWindow*
ferrobankMakeMessageWindow(const ferrobank::WindowCollaborators& with);
}
