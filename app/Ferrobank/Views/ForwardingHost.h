#pragma once

#include "Ferrobank/Views/MainWindow.h"

#include <utility>

namespace ferrobank {

/// The host as one window sees it: the same, but whoever made the window hears first that it was closed. Main
/// thread.
class ForwardingHost : public WindowHost {
public:
    ForwardingHost(WindowHost& host, std::function<void()> closed) : _host(host), _closed(std::move(closed))
    {}

    void showAlert(const QString& text) override { _host.showAlert(text); }

    void chooseFolder(std::function<void(QString)> chosen) override { _host.chooseFolder(std::move(chosen)); }

    void quit() override { _host.quit(); }

    void trashAndQuit() override { _host.trashAndQuit(); }

    void windowClosed() override
    {
        _closed();
        _host.windowClosed();
    }

private:
    WindowHost& _host;
    std::function<void()> _closed;
};

} // namespace ferrobank
