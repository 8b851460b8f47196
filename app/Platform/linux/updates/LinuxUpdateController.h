#pragma once

#include "Platform/UpdateController.h"
#include "Platform/UpdateInterface.h"

#include <QtCore/QString>

#include <filesystem>
#include <functional>
#include <memory>

namespace ferrobank {

class Workspace;

/// The updater on Linux, started. Reads what the build decided from the bundle's property list; without a
/// feed it never does anything by itself and says so when asked. `quit` asks the application to end.
///
/// When the application ends, what waits is installed; so it has to be destroyed while the application object
/// still exists. `delegate`, `interface` and `workspace` must outlive it. Main thread.
[[nodiscard]] std::unique_ptr<UpdateController>
makeLinuxUpdateController(const std::filesystem::path& bundle, UpdateDelegate& delegate,
                          UpdateInterface& interface, Workspace& workspace, std::function<void()> quit);

} // namespace ferrobank
