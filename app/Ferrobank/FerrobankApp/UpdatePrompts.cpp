#include "Ferrobank/FerrobankApp/UpdatePrompts.h"

#include <utility>

namespace ferrobank {

UpdatePrompts::UpdatePrompts(Maker make) : _make(std::move(make)) {}

void UpdatePrompts::show(const UpdatePrompt& prompt)
{
    if (!_window) {
        _window = _make();
        if (!_window) {
            return;
        }
        _window->act = [this](UpdateAction action) {
            if (act) {
                act(action);
            }
        };
        _window->automaticChanged = [this](bool automatic) {
            if (automaticChanged) {
                automaticChanged(automatic);
            }
        };
    }
    _window->show(prompt);
}

void UpdatePrompts::raise()
{
    if (_window) {
        _window->raise();
    }
}

void UpdatePrompts::close()
{
    if (_window) {
        _window->close();
    }
}

} // namespace ferrobank
