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

/// `ferrobank uninstall`: copies and verifies if wished, unmounts, ends the serving process, takes the login
/// start and `~/Ferrobank` away, and deletes the store if wished, in this order; every refusal comes before
/// the first change. Throws Failure; the drive and its store are then still there. May be repeated; with
/// nothing installed it does nothing.
void uninstall(const Paths& paths, const Log& log, const UninstallWishes& wishes);

} // namespace ferrobank::drive
