#pragma once

#include "Platform/UpdateInterface.h"
#include "Platform/linux/updates/session/SessionView.h"

#include <QtCore/QLocale>

#include <optional>

namespace ferrobank::updates {

/// What the window shows for a session; none while there is nothing to show. `locale` formats byte counts.
/// Pure.
[[nodiscard]] std::optional<UpdatePrompt> promptFor(const SessionView& view, const QLocale& locale);

} // namespace ferrobank::updates
