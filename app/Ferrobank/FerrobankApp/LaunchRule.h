#pragma once

#include "Ferrobank/Model/AppModel.h"
#include "Ferrobank/Model/Screen.h"

namespace ferrobank {

/// Which screen a window shows that is opened without a wish for one, by a click on the tray icon or by
/// starting the program again. Pure.
///
/// Where the desktop has no tray this is the only way in, so it must lead to what is useful now: the
/// dashboard of a drive that is set up, the setup of one that is not. A screen that is in the middle of
/// something stays.
[[nodiscard]] Screen screenForOpening(bool setupComplete, const Screen& present,
                                      const AppModel::UninstallState& uninstall);

} // namespace ferrobank
