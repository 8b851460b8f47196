#pragma once

#include "mounting/Volume.h"
#include "platform/Paths.h"
#include "state/ServerProbe.h"

#include <optional>

namespace ferrobank::drive {

/// The mounted drive as a one-shot command sees it: by the image's own path, or by the loop device that the
/// serving process names where the image is attached under another name. Waits for no disk.
[[nodiscard]] std::optional<Volume> findServedVolume(const Paths& paths, const ServerProbe& server);

} // namespace ferrobank::drive
