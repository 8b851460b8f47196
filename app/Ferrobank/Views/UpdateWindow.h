#pragma once

#include "Ferrobank/Views/MainWindow.h"
#include "Platform/UpdateInterface.h"

#include <QtCore/QObject>
#include <QtCore/QPointer>

#include <memory>

namespace ferrobank {

class QmlWindow;
class UpdatePresenter;

/// The window of the updater. Main thread. Its engine lives only while it is open; closing it by its own
/// control counts as the prompt's dismissing button.
class UpdateWindow : public QObject, public UpdateInterface {
    Q_OBJECT

public:
    explicit UpdateWindow(const WindowCollaborators& with);
    ~UpdateWindow() override;

    void show(const UpdatePrompt& prompt) override;
    void raise() override;
    void close() override;

    /// For tests and pictures.
    [[nodiscard]] QmlWindow& window() { return *_window; }

private:
    class Host;

    [[nodiscard]] std::unique_ptr<QObject> makePresenter();
    void windowClosed();

    Diagnostics& _diagnostics;
    UpdatePrompt _prompt;
    std::unique_ptr<Host> _host;
    QPointer<UpdatePresenter> _presenter;
    std::unique_ptr<QmlWindow> _window;
    bool _isWanted = false; ///< between show() and close(): a window that closes then was closed by the user
};

} // namespace ferrobank

/// A further entry point of libferrobank-window, found by name: the window of the updater. The caller owns
/// the result and must not outlive the library with it. Like every window it tells the host when it was
/// closed.
extern "C" {
Q_DECL_EXPORT ferrobank::UpdateInterface*
ferrobankMakeUpdateWindow(const ferrobank::WindowCollaborators& with);
}
