#pragma once

#include "mounting/BackEnd.h"
#include "platform/Paths.h"

#include <filesystem>
#include <memory>

namespace ferrobank::drive {

/// The back end for this user and system: direct for root, fstab where its line is, udisks2 where it can be
/// had; else one whose every attach fails with the advice what to install.
[[nodiscard]] std::unique_ptr<BackEnd> chooseBackEnd(const Paths& paths);

inline constexpr const char* kFstab = "/etc/fstab";

} // namespace ferrobank::drive
