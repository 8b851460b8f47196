#include "Ferrobank/Views/UpdateWindow.h"

#include "Ferrobank/Views/QmlWindow.h"
#include "Ferrobank/Views/UpdatePresenter.h"

#include <QtGui/QWindow>

#include <utility>

namespace ferrobank {

using namespace Qt::StringLiterals;

/// The host as the window sees it: the same, but this window hears first that it was closed.
class UpdateWindow::Host : public WindowHost {
public:
    Host(UpdateWindow& window, WindowHost& host) : _window(window), _host(host) {}

    void showAlert(const QString& text) override { _host.showAlert(text); }

    void chooseFolder(std::function<void(QString)> chosen) override { _host.chooseFolder(std::move(chosen)); }

    void quit() override { _host.quit(); }

    void trashAndQuit() override { _host.trashAndQuit(); }

    void windowClosed() override
    {
        _window.windowClosed();
        _host.windowClosed();
    }

private:
    UpdateWindow& _window;
    WindowHost& _host;
};

UpdateWindow::UpdateWindow(const WindowCollaborators& with)
    : _diagnostics(with.diagnostics),
      _host(std::make_unique<Host>(*this, with.host)),
      _window(std::make_unique<QmlWindow>(QmlWindow::Scene{QUrl(u"qrc:/qt/qml/Ferrobank/Views/Update.qml"_s),
                                                           [this] { return makePresenter(); }},
                                          *_host))
{}

UpdateWindow::~UpdateWindow() = default;

std::unique_ptr<QObject> UpdateWindow::makePresenter()
{
    auto presenter = std::make_unique<UpdatePresenter>(_prompt, _diagnostics);
    _presenter = presenter.get();
    // Queued: what a wish leads to may close this very window.
    const auto pressed = [this](UpdateAction action) {
        if (act) {
            act(action);
        }
    };
    const auto chosen = [this](bool automatic) {
        if (automaticChanged) {
            automaticChanged(automatic);
        }
    };
    connect(presenter.get(), &UpdatePresenter::pressed, this, pressed, Qt::QueuedConnection);
    connect(presenter.get(), &UpdatePresenter::automaticChosen, this, chosen, Qt::QueuedConnection);
    return presenter;
}

void UpdateWindow::show(const UpdatePrompt& prompt)
{
    _prompt = prompt;
    if (_isWanted && _presenter) {
        _presenter->setPrompt(prompt);
        return;
    }
    _isWanted = true;
    _window->open({});
}

void UpdateWindow::raise()
{
    if (_isWanted) {
        _window->open({});
    }
}

void UpdateWindow::close()
{
    _isWanted = false;
    _window->close();
}

void UpdateWindow::windowClosed()
{
    if (std::exchange(_isWanted, false) && act) {
        act(_prompt.dismiss);
    }
}

} // namespace ferrobank

ferrobank::UpdateInterface* ferrobankMakeUpdateWindow(const ferrobank::WindowCollaborators& with)
{
    return new ferrobank::UpdateWindow(with);
}
