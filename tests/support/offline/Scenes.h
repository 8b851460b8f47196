#pragma once

#include "support/offline/Stage.h"

#include <QtCore/QString>

#include <functional>
#include <vector>

namespace ferrobank {

/// One state of one screen that can be looked at by name.
struct OfflineScene {
    enum class Window { Main, LoginItems, Message, Update };

    QString name;
    Window window = Window::Main;
    std::function<void(Stage&)> before; ///< sets up the seam
    std::function<void(Stage&)> ready;  ///< the model is there, the window is not yet open
    std::function<void(Stage&)> shown;  ///< the window is open
};

/// What the windows show that belong to no screen.
[[nodiscard]] Message offlineMessage();
[[nodiscard]] UpdatePrompt offlinePrompt();

/// The window that a scene shows; the stage has started.
[[nodiscard]] QmlWindow& windowOf(Stage& stage, const OfflineScene& scene);

/// Every screen of the application in every state that looks different.
[[nodiscard]] const std::vector<OfflineScene>& offlineScenes();

} // namespace ferrobank
