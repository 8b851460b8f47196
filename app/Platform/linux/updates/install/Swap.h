#pragma once

#include "Platform/linux/updates/install/InstallPlace.h"

#include <filesystem>
#include <string>

namespace ferrobank::updates {

/// Whether two folders in `folder`, which is ours and empty names are free in it, can be exchanged in one
/// step on this file system; tried on two empty ones.
[[nodiscard]] bool canExchange(const std::filesystem::path& folder);

/// Puts the application's folder that lies in `place.staging()/next` in the place of the installed one, in
/// one step: at every moment, power failure included, the stable path leads to one complete version. The
/// other one is kept: in staging()/next (Exchange) or in its own folder below versions (Versioned). Doing it
/// again with the versions the other way round takes it back. Throws UpdateFailure (Install, Space) with
/// nothing changed, also when the version is not there: an empty folder of its name is none.
void swapVersions(const InstallPlace& place, const std::string& to);

/// Makes now, while there is room, the link that leads back to a version that is installed (Versioned;
/// nothing is needed elsewhere), for the swap that takes an update back. Throws UpdateFailure (Install,
/// Space).
void prepareWayBack(const InstallPlace& place, const std::string& to);
void dropWayBack(const InstallPlace& place);

/// Where the version that is not installed lies after a swap from `version`.
[[nodiscard]] std::filesystem::path keptVersion(const InstallPlace& place, const std::string& version);

} // namespace ferrobank::updates
