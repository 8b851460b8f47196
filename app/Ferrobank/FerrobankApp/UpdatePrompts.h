#pragma once

#include "Platform/UpdateInterface.h"

#include <functional>
#include <memory>

namespace ferrobank {

/// The updater's window, made when the updater first has something to show: a tray program that is only
/// looking for updates carries no window. Main thread.
class UpdatePrompts : public UpdateInterface {
public:
    using Maker = std::function<std::unique_ptr<UpdateInterface>()>;

    /// `make` gives nothing when there can be no window; it has told the user then.
    explicit UpdatePrompts(Maker make);

    void show(const UpdatePrompt& prompt) override;
    void raise() override;
    void close() override;

private:
    Maker _make;
    std::unique_ptr<UpdateInterface> _window;
};

} // namespace ferrobank
