#pragma once

#include "platform/Log.h"
#include "platform/Paths.h"

#include <filesystem>
#include <functional>
#include <optional>

namespace ferrobank::drive {

enum class StoreFate { Keep, Delete };

struct UninstallWishes {
    /// Where the files are copied first.
    std::optional<std::filesystem::path> exportTo;
    StoreFate store = StoreFate::Keep;
};

/// `ferrobank uninstall`, in this order; every refusal comes before the first change:
///
/// 1. With a copy wished: copies from a snapshot and verifies, while programs go on writing.
/// 2. Unmounts, ends the serving process and takes its place, so that nobody can write.
/// 3. Mounts the drive read-only, compares it with what was copied, and copies what was changed meanwhile.
/// 4. Deletes the store if wished, unless somebody has written to it since; takes the login start and
///    `~/Ferrobank` away.
///
/// SIGINT, SIGTERM and SIGHUP end it before step 4 and leave the drive as it was. Throws Failure; the drive
/// and its store are then still there. May be repeated, also after a kill in any step; with nothing installed
/// it does nothing.
void uninstall(const Paths& paths, const Log& log, const UninstallWishes& wishes);

} // namespace ferrobank::drive
