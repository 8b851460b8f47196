#pragma once

#include "Ferrobank/Views/MainWindow.h"
#include "Platform/UpdateInterface.h"

/// A further entry point of libferrobank-window, found by name: the window of the updater. The caller owns the result
/// and must not outlive the library with it. Like every window it tells the host when it was closed; its engine
/// lives only while it is open.
extern "C" {
Q_DECL_EXPORT ferrobank::UpdateInterface* ferrobankMakeUpdateWindow(const ferrobank::WindowCollaborators& with);
}
